// Where a record stands in an order, as a fraction. The tree is walked down
// to the cursor's entry; each level narrows the range by the entry's place
// among its node's entries, as if every child held as many keys as its
// siblings. That is exact for a tree of evenly filled nodes and close for
// any other, and costs one look at each level instead of a count of keys.
#include <vector>

#include "tables/dbf_file.h"
#include "tables/index.h"
#include "tables/index_file.h"

namespace zobase {

double Index::position(const index_cursor_st& cursor, bool from_end) {
    check_version();
    uint32_t record = cursor.record();
    std::vector<waypoint_st> path;
    descend(cursor.key(), key_length(), &record, &path);
    double share = 0;
    double width = 1;
    // Each level adds the share of the entries on the side asked for.
    auto narrow = [&](double index, double count) {
        share += width * (from_end ? count - 1 - index : index) / count;
        width /= count;
    };
    for (const waypoint_st& step : path)
        narrow(static_cast<double>(step.index), file->node(step.position, key_length(), leaf_kind()).count);
    narrow(static_cast<double>(cursor.index), static_cast<double>(cursor.entries.size()));
    return share;
}

// A descending order runs the tag from its end.
double DbfFile::index_position() {
    if (eof) return 1;
    settle_order();
    if (bof || !order_cursor || !order_cursor->on_key()) return 0;
    order.index->expand(order_cursor.get());
    return order.index->position(*order_cursor, order.descending);
}

}  // namespace zobase
