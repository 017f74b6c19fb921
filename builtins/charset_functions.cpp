// Charsets as the language sees them: the charset a string carries, the
// list of supported ones, the default one, conversion between them and
// detection of the charset of unmarked bytes.
#include <unicode/ucsdet.h>

#include <string>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "text/charset.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// A charset named by its code page number or by its name; unknown is 9003.
const Charset* charset_argument(VmStack* stack, unsigned long long i) {
    const Variant& value = argument(stack, i);
    if (value.is_number()) {
        long long codepage = static_cast<integer_type_st>(value);
        const Charset* charset = get_charset_by_codepage(checked_count(codepage), false);
        if (!charset) throw RuntimeError(ERR_CHARSET_NOT_SUPPORTED, String(std::to_string(codepage).c_str()));
        return charset;
    }
    if (value.tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const Charset* charset = get_charset_by_name(value.str());
    if (!charset) throw RuntimeError(ERR_CHARSET_NOT_SUPPORTED, value.str());
    return charset;
}

void collect_name(void* context, const char* name) {
    static_cast<std::vector<String>*>(context)->push_back(String(name));
}

struct detector_closer_st {
    void operator()(UCharsetDetector* detector) const { ucsdet_close(detector); }
};

}  // namespace

// The name of the string's charset; one that is never translated shows
// "/nocptrans" behind it.
void stackcall_charset(VmStack* stack, unsigned long long, Variant* result) {
    const Charset* charset = string_argument(stack, 1).get_charset();
    std::string name = charset->name();
    if (charset->nocptrans) name += "/nocptrans";
    result->set_string(String(name.c_str()));
}

// Fills the array with the names of every supported charset; the count.
void stackcall_acharset(VmStack* stack, unsigned long long, Variant* result) {
    std::vector<String> names;
    list_supported_charset(&names, collect_name);
    Array* array = Param(stack, 1)->dimension(stack, names.size(), 0);
    for (size_t i = 0; i < names.size(); ++i) {
        Variant name;
        name.set_string(names[i]);
        set_array_element(stack, array, i + 1, name);
        name.release(stack);
    }
    result->set_integer(static_cast<long long>(names.size()));
}

// The code page of the default charset.
void stackcall_cpcurrent(VmStack* stack, unsigned long long, Variant* result) {
    result->set_integer(GetCharsetCPID(default_charset(stack)));
}

// cpconvert(to, text) converts the text to a charset; cpconvert(from, to,
// text) first reads the text's bytes in `from`. Charsets are code page
// numbers or names; characters the target lacks are substituted.
void stackcall_cpconvert(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    unsigned long long text_at = argc >= 3 ? 3 : 2;
    const Variant& value = argument(stack, text_at);
    if (value.tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    const Charset* target = charset_argument(stack, text_at - 1);
    String text = value.str();
    if (argc >= 3)
        text = String::fromBytes(text.read(), text.size(), charset_argument(stack, 1));
    text.convert(target, 0, CSTRAN_SUBSTITUTE);
    result->set_string(text);
}

// The charset ICU's detector finds most likely for the string's bytes, by
// this system's name when it has the charset; the confidence from 0 to 100
// goes into the by-reference second argument. Nothing found: "".
void stackcall_detectcharset(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const String& text = string_argument(stack, 1);
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<UCharsetDetector, detector_closer_st> detector(ucsdet_open(&status));
    ucsdet_setText(detector.get(), text.read(), static_cast<int32_t>(text.size()), &status);
    const UCharsetMatch* match = text.size() ? ucsdet_detect(detector.get(), &status) : nullptr;
    String name("");
    int32_t confidence = 0;
    if (U_SUCCESS(status) && match) {
        const char* icu_name = ucsdet_getName(match, &status);
        confidence = ucsdet_getConfidence(match, &status);
        const Charset* known = get_charset_by_name(icu_name);
        name = String(known ? known->name() : icu_name);
    }
    if (argc >= 2) {
        Variant level;
        level.set_integer(confidence);
        set_reference_argument(stack, 2, level);
    }
    result->set_string(name);
}

// The same bytes, marked as binary: never translated, compared byte by byte.
void stackcall_createbinary(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    const String& text = string_argument(stack, 1);
    result->set_string(String::fromBytes(text.read(), text.size(), Charset::binary));
}

}  // namespace zobase
