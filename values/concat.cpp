// Concat: pieces are collected with a running size estimate so that the
// join allocates once; a charset that cannot hold every piece is replaced by
// one that can, found by an exact dry run.
#include <cstring>
#include <stdexcept>

#include "base/call_trace.h"
#include "text/charset.h"
#include "values/error.h"
#include "values/string.h"
#include "values/string_detail.h"

namespace zobase {

using namespace string_detail;

void Concat::append(const String& piece) {
    pieces_.push_back(piece);
    const Charset* cs = piece.get_charset();
    if (!charset_ || cs == charset_) {
        charset_ = cs;
        total_ += piece.size();
    } else if (charset_ == Charset::binary) {
        total_ += piece.size();
    } else {
        total_ += piece.size() / cs->min_char() * charset_->max_char();
    }
}

namespace {

// Joins into `charset`; null and the failing piece when a piece won't convert.
String join_pieces(const std::vector<String>& pieces, const Charset* charset, uint64_t total,
                   bool terminate, const String*& failed) {
    size_t terminator = terminate ? charset->min_char() : 0;
    String joined(total + terminator, charset);
    char* begin = total + terminator ? joined.write() : nullptr;
    char* out = begin;
    char* out_end = begin + total;
    for (const String& piece : pieces) {
        if (transcode(piece.read(), piece.end(), piece.get_charset(), out, out_end, charset,
                      CSTRAN_STRICT) != 0) {
            failed = &piece;
            return String();
        }
    }
    std::memset(out, 0, terminator);
    joined.resize(static_cast<size_t>(out - begin));
    failed = nullptr;
    return joined;
}

// Exact output size of all pieces in `charset`, or false when one won't fit it.
bool exact_total(const std::vector<String>& pieces, const Charset* charset, uint64_t& total) {
    total = 0;
    for (const String& piece : pieces) {
        size_t size = 0;
        if (transcoded_size(piece.read(), piece.end(), piece.get_charset(), charset, CSTRAN_STRICT,
                            size) != 0)
            return false;
        total += size;
    }
    return true;
}

}  // namespace

String Concat::to_string(bool terminate) const {
    ZO_TRACE();
    require_charsets();
    if (pieces_.empty()) return String(0, charset_ ? charset_ : Charset::ascii);
    if (pieces_.size() == 1 && pieces_.front().get_charset() == charset_) return pieces_.front();
    const String* failed = nullptr;
    String joined = join_pieces(pieces_, charset_, total_, terminate, failed);
    if (!failed) return joined;
    // The estimate's charset could not hold everything: settle on one that can.
    const Charset* fallback = failed->get_charset();
    uint64_t exact = 0;
    if (!exact_total(pieces_, fallback, exact)) {
        fallback = Charset::utf16le;
        if (!exact_total(pieces_, fallback, exact)) throw cstran_chars_lost();
    }
    charset_ = fallback;
    total_ = exact;
    joined = join_pieces(pieces_, charset_, total_, terminate, failed);
    if (failed) throw cstran_chars_lost();
    return joined;
}

StringBuilder& operator<<(StringBuilder& builder, const String& piece) {
    builder.append(piece);
    return builder;
}

StringBuilder& operator<<(StringBuilder& builder, const char* utf8) {
    builder.append(String(utf8));
    return builder;
}

}  // namespace zobase
