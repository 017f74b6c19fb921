// Json.Encode and Json.Decode. Decoding runs RapidJSON's iterative parser,
// which keeps its own stack, and builds the values on an explicit stack too,
// so no depth of input reaches the machine's stack; nesting deeper than
// JSON_MAX_DEPTH is an error. Encoding walks arrays and objects with an
// explicit stack.
#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <shared_mutex>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/base64.h"
#include "builtins/handlers.h"
#include "builtins/utf8_text.h"
#include "objects/collection_object.h"
#include "objects/object.h"
#include "text/charset.h"
#include "values/date.h"
#include "values/money.h"
#include "vm/call_resolver.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// As deep as Python's json module goes by default, so that what one writes
// the other reads.
constexpr size_t JSON_MAX_DEPTH = 1000;

// A Variant's bytes without its copy semantics: values move in and out of
// the pending list bitwise, so a growing vector never touches reference counts.
struct variant_slot_st {
    alignas(Variant) unsigned char bytes[sizeof(Variant)];
};

Variant* as_variant(variant_slot_st& slot) { return reinterpret_cast<Variant*>(slot.bytes); }

// ---- decoding ------------------------------------------------------------------

// Receives the parser's events. Values wait in `pending`; an array's
// elements are the pending values from its start mark on, and become one
// array value when it closes.
class ValueBuilder : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, ValueBuilder> {
public:
    explicit ValueBuilder(VmStack* stack) : stack_(stack) {}
    ~ValueBuilder() {
        for (variant_slot_st& slot : pending_) as_variant(slot)->release(stack_);
    }
    ValueBuilder(const ValueBuilder&) = delete;
    ValueBuilder& operator=(const ValueBuilder&) = delete;

    bool too_deep = false;

    bool Null() {
        Variant value;
        value.set_null();
        return add(value);
    }
    bool Bool(bool b) {
        Variant value;
        value.set_bool(b);
        return add(value);
    }
    bool RawNumber(const char* text, rapidjson::SizeType length, bool) {
        Variant value;
        number_value(text, text + length, &value);
        return add(value);
    }
    bool String(const char* text, rapidjson::SizeType length, bool) {
        Variant value;
        value.set_string(zobase::String::fromBytes(text, length, Charset::utf8));
        return add(value);
    }
    // A key arrives as a string: an object's pending values are its keys
    // and values in turn.
    bool StartObject() { return StartArray(); }
    bool EndObject(rapidjson::SizeType count) {
        size_t start = starts_.back();
        starts_.pop_back();
        Variant value;
        Object* object = create_empty_object(stack_, &value);
        std::vector<new_property_st> properties;
        properties.reserve(count);
        for (size_t i = start; i < pending_.size(); i += 2) {
            const zobase::String& key = as_variant(pending_[i])->str();
            properties.push_back({property_symbol(key), &key, as_variant(pending_[i + 1])});
        }
        try {
            add_properties(stack_, object, properties.data(), properties.size());
        } catch (...) {
            value.release(stack_);
            throw;
        }
        for (size_t i = start; i < pending_.size(); ++i) as_variant(pending_[i])->release(stack_);
        pending_.resize(start);
        return add(value);
    }
    bool StartArray() {
        if (starts_.size() >= JSON_MAX_DEPTH) {
            too_deep = true;
            return false;
        }
        starts_.push_back(pending_.size());
        return true;
    }
    bool EndArray(rapidjson::SizeType) {
        size_t start = starts_.back();
        starts_.pop_back();
        size_t count = pending_.size() - start;
        Variant value;
        value.tag = TAG_ARRAY;
        value.array = Array::create(count, 0);
        if (count) std::memcpy(static_cast<void*>(value.array.storage->elements), &pending_[start], count * sizeof(Variant));
        pending_.resize(start);
        return add(value);
    }

    // The one value of the document, moved into a clean `out`.
    void take_result(Variant* out) {
        std::memcpy(static_cast<void*>(out), pending_.back().bytes, sizeof(Variant));
        pending_.pop_back();
    }

private:
    VmStack* stack_;
    std::vector<variant_slot_st> pending_;
    std::vector<size_t> starts_;

    // Any key is a name, the empty one too: symbols are texts.
    unsigned property_symbol(const zobase::String& key) {
        if (!stack_->resolver) raise_not_available("Json.Decode of a JSON object");
        return stack_->resolver->symbolize(key);
    }

    bool add(const Variant& value) {
        pending_.emplace_back();
        std::memcpy(pending_.back().bytes, static_cast<const void*>(&value), sizeof(Variant));
        return true;
    }

    // A whole number that fits 64 bits is an integer; any other a numeric
    // whose decimals are those the text shows.
    static void number_value(const char* begin, const char* end, Variant* out) {
        const char* point = std::find(begin, end, '.');
        const char* exponent = std::find_if(begin, end, [](char c) { return c == 'e' || c == 'E'; });
        long long whole;
        if (point == end && exponent == end) {
            auto [at, error] = std::from_chars(begin, end, whole);
            if (error == std::errc() && at == end) return out->set_integer(whole);
        }
        double value = 0;
        // from_chars refuses subnormal values, which strtod reads; the parser
        // has refused what overflows already.
        if (std::from_chars(begin, end, value).ec == std::errc::result_out_of_range) value = std::strtod(begin, nullptr);
        long long decimals = point == end ? 0 : static_cast<long long>((exponent < end ? exponent : end) - point - 1);
        if (exponent != end) decimals -= std::strtol(exponent + 1, nullptr, 10);
        out->set_float(value, static_cast<uint64_t>(std::clamp(decimals, 0LL, 18LL)));
    }
};

// Line and column (in characters) of a byte offset, for messages.
void position_of(const char* text, size_t offset, size_t* line, size_t* column) {
    *line = 1;
    size_t line_start = 0;
    for (size_t i = 0; i < offset; ++i)
        if (text[i] == '\n') {
            ++*line;
            line_start = i + 1;
        }
    *column = 1;
    for (size_t i = line_start; i < offset; ++i)
        if ((static_cast<unsigned char>(text[i]) & 0xC0) != 0x80) ++*column;
}

// Bad JSON is a syntax error whose message tells what and where.
RuntimeError json_syntax_error(const std::string& what, const char* text, size_t offset) {
    size_t line, column;
    position_of(text, offset, &line, &column);
    std::string detail = "JSON text, line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + what;
    RuntimeError error(ERR_SYNTAX, String(detail.c_str()));
    error.message.add(String((" " + detail).c_str()));
    return error;
}

// The parser calls a control character in a string a bad escape.
std::string parse_error_text(const rapidjson::ParseResult& parsed, const String& text) {
    if (parsed.Code() == rapidjson::kParseErrorStringEscapeInvalid && parsed.Offset() < text.size() &&
        static_cast<unsigned char>(text.read()[parsed.Offset()]) < 0x20)
        return "Control character in string.";
    return rapidjson::GetParseError_En(parsed.Code());
}

// Text of another charset is converted, so only UTF-8 and bytes need the check.
void decode(VmStack* stack, const String& text, Variant* out) {
    String utf8 = text;
    if (utf8.get_charset() != Charset::utf8 && utf8.get_charset() != Charset::binary) {
        utf8.convert(Charset::utf8, 0, CSTRAN_SUBSTITUTE);
    } else {
        size_t valid = utf8_valid_prefix(utf8.read(), utf8.size());
        if (valid != utf8.size()) throw json_syntax_error("The text is not UTF-8.", utf8.read(), valid);
    }
    ValueBuilder builder(stack);
    rapidjson::Reader reader;
    rapidjson::MemoryStream input(utf8.read(), utf8.size());
    constexpr unsigned flags = rapidjson::kParseIterativeFlag | rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::ParseResult parsed = reader.Parse<flags>(input, builder);
    if (builder.too_deep)
        throw json_syntax_error("Arrays and objects nested deeper than " + std::to_string(JSON_MAX_DEPTH) + " levels.",
                                utf8.read(), parsed.Offset());
    if (parsed.IsError()) throw json_syntax_error(parse_error_text(parsed, utf8), utf8.read(), parsed.Offset());
    builder.take_result(out);
}

// ---- encoding ------------------------------------------------------------------

class JsonWriter {
public:
    std::string out;

    void null() { out += "null"; }
    void logical(bool value) { out += value ? "true" : "false"; }

    void integer(long long value) {
        char text[24];
        out.append(text, std::to_chars(text, text + sizeof text, value).ptr);
    }

    // The shortest text that reads back as the same double; JSON has no
    // infinities or NaN, so those are null.
    void numeric(double value) {
        if (!std::isfinite(value)) return null();
        char text[32];
        out.append(text, std::to_chars(text, text + sizeof text, value).ptr);
    }

    // Exact: the ten-thousandths as decimal digits, without trailing zeros.
    void money(const money_type_st& value) {
        std::string text = money_to_string(value).u8str();
        size_t point = text.find('.');
        if (point != std::string::npos) {
            size_t last = text.find_last_not_of('0');
            text.erase(last == point ? point : last + 1);
        }
        out += text;
    }

    void date(date_st value) {
        if (value.julian == 0) return null();
        int year, month, day;
        unserial_julian_date(value, &year, &month, &day);
        char text[32];
        std::snprintf(text, sizeof text, "\"%04d-%02d-%02d\"", year, month, day);
        out += text;
    }

    // ISO 8601 without a zone; milliseconds only when there are some.
    void datetime(datetime_st value) {
        if (value.julian == 0 && value.msecs == 0) return null();
        int year, month, day, hour, minute, second, msec;
        unserial_julian_date(value, &year, &month, &day, &hour, &minute, &second, &msec);
        char text[48];
        int n = std::snprintf(text, sizeof text, "\"%04d-%02d-%02dT%02d:%02d:%02d", year, month, day, hour, minute, second);
        if (msec) n += std::snprintf(text + n, sizeof text - static_cast<size_t>(n), ".%03d", msec);
        out.append(text, static_cast<size_t>(n));
        out += '"';
    }

    // Text in UTF-8; a binary string, which is bytes and not text, as base64.
    void string(const String& value) {
        if (value.get_charset() == Charset::binary) return base64(value);
        if (value.get_charset() == Charset::utf8 || value.get_charset() == Charset::ascii)
            return utf8_string(value.read(), value.end());
        String utf8 = value;
        utf8.convert(Charset::utf8, 0, CSTRAN_STRICT);
        utf8_string(utf8.read(), utf8.end());
    }

private:
    void base64(const String& value) {
        out += '"';
        out += base64_encode(value.read(), value.size());
        out += '"';
    }

    // Escapes what JSON requires; a byte sequence that isn't UTF-8 is 9009.
    void utf8_string(const char* begin, const char* end) {
        static const char hex[] = "0123456789abcdef";
        out += '"';
        const char* run = begin;  // the start of bytes copied as they are
        for (const char* p = begin; p < end;) {
            unsigned char c = static_cast<unsigned char>(*p);
            if (c >= 0x80) {
                size_t length = utf8_sequence_length(p, end);
                if (!length) invalid();
                p += length;
                continue;
            }
            if (c >= 0x20 && c != '"' && c != '\\') {
                ++p;
                continue;
            }
            out.append(run, p);
            switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\r': out += "\\r"; break;
            case '\t': out += "\\t"; break;
            case '\b': out += "\\b"; break;
            case '\f': out += "\\f"; break;
            default:
                out += "\\u00";
                out += hex[c >> 4];
                out += hex[c & 15];
            }
            run = ++p;
        }
        out.append(run, end);
        out += '"';
    }

    [[noreturn]] static void invalid() { throw RuntimeError(ERR_INVALID_BYTE_SEQUENCE, String("utf-8")); }
};

// An object's members as they are written: the names and values read
// before any is written. A collection whose items all have keys is a JSON
// object; one without keys, or with some items unkeyed, an array.
struct object_members_st {
    VmStack* stack;
    bool as_array = false;
    std::vector<String> names;
    std::vector<Variant> values;
    explicit object_members_st(VmStack* s) : stack(s) {}
    ~object_members_st() {
        for (Variant& value : values) value.release(stack);
    }
};

int note_public_property(void* context, Object*, unsigned symbol, const ClassMember* member) {
    if (member->type == MEMBER_PROPERTY && member->access && member->visibility == MEMBER_PUBLIC &&
        !is_class_name_member(member))
        static_cast<std::vector<const ClassMember*>*>(context)->push_back(member);
    return 0;
}

void collection_members(const Collection_Object* collection, object_members_st* out) {
    std::shared_lock guard(const_cast<Collection_Object*>(collection)->lock);
    out->as_array = collection->entries.empty();
    for (const auto& entry : collection->entries) {
        if (entry->key.size() == 0) out->as_array = true;
        out->names.push_back(entry->key);
        out->values.emplace_back();
        entry->value.copy(&out->values.back());
    }
}

// A collection's items, or an object's public properties (but the three
// that name its class) in the order of its member tables, each once, read
// as the language reads them.
std::unique_ptr<object_members_st> object_members(VmStack* stack, Object* object) {
    auto members = std::make_unique<object_members_st>(stack);
    for (Object* link = object; link; link = link->parent)
        if (auto* collection = dynamic_cast<Collection_Object*>(link)) {
            collection_members(collection, members.get());
            return members;
        }
    std::vector<const ClassMember*> found;
    object->virtual_enum_properties(note_public_property, &found);
    for (const ClassMember* member : found) {
        const ClassMember* effective;
        Object* holder;
        if (!object->get_member(member->symbol, &effective, &holder) || effective != member) continue;
        members->names.push_back(member->name);
        members->values.emplace_back();
        read_property(stack, object, member->symbol, &members->values.back());
    }
    return members;
}

// A value being written: an array's elements (or, by rows, the rows) from
// `next` to `end`, a row of a two-dimensional array written as an array of
// its own; or an object's members.
struct open_value_st {
    const Array* array;
    uint64_t first;
    uint64_t next;
    uint64_t end;
    bool by_rows;
    std::unique_ptr<object_members_st> members;
};

void encode_scalar(JsonWriter& writer, const Variant& value) {
    switch (value.tag) {
    case TAG_NULL: return writer.null();
    case TAG_FALSE: return writer.logical(false);
    case TAG_TRUE: return writer.logical(true);
    case TAG_INTEGER: return writer.integer(value.integer);
    case TAG_NUMERIC: return writer.numeric(value.numeric.value);
    case TAG_MONEY: return writer.money(value.money);
    case TAG_DATE: return writer.date(value.date);
    case TAG_DATETIME: return writer.datetime(value.datetime);
    case TAG_STRING: return writer.string(value.str());
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
}

// The walk keeps its open values on `open`, never on the machine's stack;
// an object that holds itself is nested too deep.
void encode(VmStack* stack, JsonWriter& writer, const Variant& root) {
    std::vector<open_value_st> open;
    auto push = [&](open_value_st value, char bracket) {
        if (open.size() >= JSON_MAX_DEPTH) throw RuntimeError(ERR_NESTING_TOO_DEEP);
        writer.out += bracket;
        open.push_back(std::move(value));
    };
    auto write_value = [&](const Variant* value) {
        if (value->tag == TAG_ARRAY) {
            const Array& array = value->array;
            if (array.columns) push({&array, 0, 0, array.rows(), true, nullptr}, '[');
            else push({&array, 0, 0, array.count, false, nullptr}, '[');
        } else if (value->tag == TAG_OBJECT) {
            if (!value->object.control) return writer.null();
            if (open.size() >= JSON_MAX_DEPTH) throw RuntimeError(ERR_NESTING_TOO_DEEP);
            auto members = object_members(stack, value->object.object);
            uint64_t count = members->values.size();
            char bracket = members->as_array ? '[' : '{';
            push({nullptr, 0, 0, count, false, std::move(members)}, bracket);
        } else {
            encode_scalar(writer, *value);
        }
    };
    write_value(root.follow());
    while (!open.empty()) {
        open_value_st& top = open.back();
        if (top.next == top.end) {
            writer.out += top.members && !top.members->as_array ? '}' : ']';
            open.pop_back();
            continue;
        }
        if (top.next != top.first) writer.out += ',';
        uint64_t i = top.next++;
        // Writing a value may grow `open`, so `top` is not used after it.
        if (object_members_st* members = top.members.get()) {
            if (!members->as_array) {
                writer.string(members->names[i]);
                writer.out += ':';
            }
            write_value(members->values[i].follow());
            continue;
        }
        const Array* array = top.array;
        if (top.by_rows) push({array, i * array->columns, i * array->columns, (i + 1) * array->columns, false, nullptr}, '[');
        else write_value(array->storage->elements[i].follow());
    }
}

}  // namespace

// Json.Encode(value): the value as JSON text in UTF-8.
void stackcall_json_encode(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    JsonWriter writer;
    encode(stack, writer, argument(stack, 1));
    result->set_string(String::fromBytes(writer.out.data(), writer.out.size(), Charset::utf8));
}

// Json.Decode(text [, @error]): the value of JSON text; arrays become
// one-dimensional arrays, objects Empty objects with a property per key. With `error` given, bad text gives null and the
// error's message goes there ("" when the text is good) instead of raising.
void stackcall_json_decode(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    Variant* error_text = argc >= 2 ? Param(stack, 2)->follow() : nullptr;
    if (!error_text) return decode(stack, string_argument(stack, 1), result);
    try {
        decode(stack, string_argument(stack, 1), result);
        error_text->release(stack);
        error_text->set_string(String(""));
    } catch (const RuntimeError& error) {
        if (error.number != ERR_SYNTAX) throw;
        error_text->release(stack);
        error_text->set_string(error.message);
        result->set_null();
    }
}

}  // namespace zobase
