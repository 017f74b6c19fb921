// Numbers as sortable bytes (bintoc) and message digests (hash).
#include <openssl/evp.h>

#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "text/charset.h"
#include "vm/runtime_services.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// How bintoc lays a number out.
struct bintoc_layout_st {
    int size = 4;          // 1, 2, 4 or 8 bytes
    bool floating = false; // "F" a float, "B" a double
    bool keep_sign = false;  // "S": the sign bit stays as it is
    bool reversed = false;   // "R": least significant byte first
};

// A size, or a text of flags: "1", "2", "4", "8", "F", "B", "S", "R".
bintoc_layout_st read_layout(const Variant& form) {
    bintoc_layout_st layout;
    if (form.is_number()) {
        long long size = static_cast<integer_type_st>(form);
        if (size != 1 && size != 2 && size != 4 && size != 8) throw RuntimeError(ERR_ARGUMENT_INVALID);
        layout.size = static_cast<int>(size);
        return layout;
    }
    if (form.tag != TAG_STRING) throw RuntimeError(ERR_ARGUMENT_INVALID);
    for (char c : form.str().u8str()) {
        switch (std::toupper(static_cast<unsigned char>(c))) {
        case '1': case '2': case '4': case '8': layout.size = c - '0'; break;
        case 'F': layout.floating = true; layout.size = 4; break;
        case 'B': layout.floating = true; layout.size = 8; break;
        case 'S': layout.keep_sign = true; break;
        case 'R': layout.reversed = true; break;
        case ' ': break;
        default: throw RuntimeError(ERR_ARGUMENT_INVALID);
        }
    }
    if (layout.floating && layout.size != 4 && layout.size != 8) throw RuntimeError(ERR_ARGUMENT_INVALID);
    return layout;
}

// The bits of an integer that must fit the size in two's complement (39 otherwise),
// with the sign bit flipped so that the bytes sort as the numbers do.
uint64_t integer_bits(const Variant& value, const bintoc_layout_st& layout) {
    double whole = std::trunc(static_cast<double>(value));
    long long number = value.tag == TAG_INTEGER ? value.integer : static_cast<long long>(whole);
    int bits = layout.size * 8;
    if (bits < 64) {
        long long low = -(1LL << (bits - 1)), high = (1LL << (bits - 1)) - 1;
        if (number < low || number > high) throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    } else if (value.tag != TAG_INTEGER && !(whole >= -0x1.0p63 && whole < 0x1.0p63)) {
        throw RuntimeError(ERR_NUMERIC_OVERFLOW);
    }
    uint64_t pattern = static_cast<uint64_t>(number);
    if (!layout.keep_sign) pattern ^= 1ull << (bits - 1);
    return pattern;
}

// IEEE bits; sortable unless "S": positives get the sign bit, negatives are inverted.
uint64_t floating_bits(const Variant& value, const bintoc_layout_st& layout) {
    double number = static_cast<double>(value);
    uint64_t pattern;
    int bits = layout.size * 8;
    if (layout.size == 4) {
        float narrow = static_cast<float>(number);
        uint32_t word;
        std::memcpy(&word, &narrow, 4);
        pattern = word;
    } else {
        std::memcpy(&pattern, &number, 8);
    }
    if (layout.keep_sign) return pattern;
    uint64_t sign = 1ull << (bits - 1);
    uint64_t mask = bits == 64 ? ~0ull : (1ull << bits) - 1;
    return (pattern & sign) ? ~pattern & mask : pattern | sign;
}

const EVP_MD* digest_named(const String& name) {
    std::string lower = name.lower().u8str();
    if (lower == "sha1" || lower == "sha-1") return EVP_sha1();
    if (lower == "sha256" || lower == "sha-256") return EVP_sha256();
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

}  // namespace

// bintoc(number[, size | flags]): a binary string of 4 bytes by default,
// most significant first, laid out so that the strings sort as the numbers.
void stackcall_bintoc(VmStack* stack, unsigned long long argc, Variant* result) {
    if (any_null_argument(stack, argc)) return result->set_null();
    const Variant& value = argument(stack, 1);
    if (!value.is_number()) throw RuntimeError(ERR_ARGUMENT_INVALID);
    bintoc_layout_st layout = argc >= 2 ? read_layout(argument(stack, 2)) : bintoc_layout_st{};
    uint64_t pattern = layout.floating ? floating_bits(value, layout) : integer_bits(value, layout);
    char bytes[8];
    for (int i = 0; i < layout.size; ++i) {
        int shift = 8 * (layout.reversed ? i : layout.size - 1 - i);
        bytes[i] = static_cast<char>((pattern >> shift) & 0xFF);
    }
    result->set_string(String::fromBytes(bytes, static_cast<size_t>(layout.size), Charset::binary));
}

// hash(algorithm, text): the digest of the text's bytes as lower-case
// hexadecimal digits. "SHA1" and "SHA256" (also written with a dash).
void stackcall_hash(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    if (any_null_argument(stack, argc)) return result->set_null();
    const EVP_MD* digest = digest_named(string_argument(stack, 1));
    const String& text = string_argument(stack, 2);
    unsigned char sum[EVP_MAX_MD_SIZE];
    unsigned int length = 0;
    if (!EVP_Digest(text.read(), text.size(), sum, &length, digest, nullptr))
        throw assert_failed_exception("EVP_Digest");
    static const char digits[] = "0123456789abcdef";
    std::string hex;
    for (unsigned int i = 0; i < length; ++i) {
        hex += digits[sum[i] >> 4];
        hex += digits[sum[i] & 15];
    }
    String out(hex.c_str());
    out.convert(default_charset(stack), 0, CSTRAN_SUBSTITUTE);
    result->set_string(out);
}

}  // namespace zobase
