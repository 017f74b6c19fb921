#pragma once
// KeyReader: the key of a tag read straight from a record's bytes, for the
// keys most tags have: a field by itself, or UPPER() of a character field.
// Building a tag over a million records then runs no program per record.
// Anything else (an expression, a nullable or binary field, a character
// field under a collation of another charset) has no reader and the tag's
// key program runs as before; a record whose text is not plain ASCII where
// UPPER() or a multibyte charset would have to look at characters is
// handed back to the program too, so the bytes are always the program's.
#include <cstdint>

namespace zobase {

class DbfField;
class DbfFile;
class Index;

class KeyReader {
public:
    // A reader for the tag's key on this table; usable() says whether there
    // is one.
    KeyReader(DbfFile* table, const Index* tag);

    bool usable() const noexcept { return way_ != NONE; }
    // The key of `record` at the tag's full key length into `out`; false
    // when this record needs the key program.
    bool read(const char* record, char* out) const;

private:
    enum Way { NONE, CHARACTER, UPPER_CHARACTER, VALUE };
    DbfFile* table_;
    const Index* tag_;
    const DbfField* field_ = nullptr;
    Way way_ = NONE;
    // Bytes of a character value: the whole field, or as many bytes as the
    // field holds characters when the charset is multibyte (then they must
    // be ASCII to be one character each).
    uint64_t value_bytes_ = 0;
    bool multibyte_ = false;

    bool text_bytes(const char* record, char* upper_out) const;
};

}  // namespace zobase
