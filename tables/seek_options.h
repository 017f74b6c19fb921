#pragma once
// How a key is looked up in a tag: which way, and whether the bound itself
// belongs to the range. Hosts pass these through the table interface.

namespace zobase {

enum SeekRng : unsigned {
    SEEK_RANGE_INCLUSIVE = 1,  // the bound belongs to the range
    SEEK_RANGE_STRICT = 2,     // look behind the bound
};
enum SeekDir : int {
    SEEK_FORWARD = 1,
    SEEK_BACKWARD = 2,
};

}  // namespace zobase
