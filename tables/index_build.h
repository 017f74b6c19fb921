#pragma once
// Building a new tag from the records of its table (index_build.cpp).
namespace zobase {

class DbfFile;
class Index;
class VmStack;

// The entry of every record the tag's filter takes, sorted, checked for
// duplicates when the tag is unique (dbf_unique_key_violation), and built
// into the empty tag bottom-up. Moves the table's cursor over every record
// and leaves it on the last: the caller keeps its own position.
void build_tag_from_records(VmStack* stack, DbfFile* table, Index* tag);

}  // namespace zobase
