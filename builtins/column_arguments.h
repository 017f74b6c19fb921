#pragma once
// The columns of CREATE TABLE and ALTER TABLE ADD COLUMN as the compiler
// passes them: seven arguments each, name, type letter, width, decimals,
// NEXTVALUE, STEP and flags.
#include "tables/table_definition.h"

namespace zobase {

class VmStack;

constexpr unsigned long long COLUMN_ARGUMENTS = 7;

// The column whose arguments start at position `first`; error 1713 for a
// negative size.
fielddef_st column_definition(VmStack* stack, unsigned long long first);

}  // namespace zobase
