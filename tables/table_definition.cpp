#include "tables/table_definition.h"

namespace zobase {

namespace {

struct type_letter_st {
    int32_t type;
    char letter;
};

constexpr type_letter_st type_letters[] = {
    {FIELD_TYPE_BLOB, 'W'},     {FIELD_TYPE_CHARACTER, 'C'}, {FIELD_TYPE_INTEGER, 'I'},
    {FIELD_TYPE_CURRENCY, 'Y'}, {FIELD_TYPE_DATE, 'D'},      {FIELD_TYPE_DATETIME, 'T'},
    {FIELD_TYPE_DOUBLE, 'B'},   {FIELD_TYPE_GENERAL, 'G'},   {FIELD_TYPE_LOGICAL, 'L'},
    {FIELD_TYPE_MEMO, 'M'},     {FIELD_TYPE_NUMERIC, 'N'},   {FIELD_TYPE_FLOAT, 'F'},
    {FIELD_TYPE_VARBINARY, 'Q'}, {FIELD_TYPE_VARCHAR, 'V'},
};

}  // namespace

char field_type_letter(int32_t type) noexcept {
    for (const type_letter_st& row : type_letters)
        if (row.type == type) return row.letter;
    return 0;
}

int32_t field_type_number(char letter) noexcept {
    for (const type_letter_st& row : type_letters)
        if (row.letter == letter) return row.type;
    return FIELD_TYPE_NONE;
}

}  // namespace zobase
