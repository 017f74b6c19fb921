#pragma once
// Base64 (RFC 4648, with padding) through OpenSSL's encoder.
#include <openssl/evp.h>

#include <string>

namespace zobase {

inline std::string base64_encode(const char* bytes, size_t size) {
    std::string encoded(4 * ((size + 2) / 3) + 1, '\0');
    int n = EVP_EncodeBlock(reinterpret_cast<unsigned char*>(encoded.data()),
                            reinterpret_cast<const unsigned char*>(bytes), static_cast<int>(size));
    encoded.resize(static_cast<size_t>(n));
    return encoded;
}

}  // namespace zobase
