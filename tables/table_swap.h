#pragma once
// Putting a rewritten table in place of the old one as a single step against
// a crash. The new table, complete with its memo and index files under a
// temporary name beside the old one, is first named in a marker file; the
// files are then renamed over the old ones, the table last, and the marker
// removed. A process killed during the renames leaves the marker, and the
// next open of the table finishes them: the table is never seen with a memo
// or index file of the other version.
#include <filesystem>
#include <functional>

namespace zobase {

// The table at `from` (with its .fpt and .cdx, when it has them) in place of
// the table at `to`, whose own companions go. The caller holds the old table
// open exclusively until `release` (closing it) runs after the renames, so
// no other process opens it half swapped. A failure raises
// std::filesystem::filesystem_error: before the marker is written the new
// files are removed, afterwards they stay for the next open to finish.
void swap_table_into_place(const std::filesystem::path& from, const std::filesystem::path& to,
                           const std::function<void()>& release = [] {});

// The table and its memo and index files, removed as far as they exist.
void remove_table_files(const std::filesystem::path& table);

// What an interrupted swap_table_into_place left of a swap into `table`,
// finished; nothing when there was none, or while another open holds the
// table exclusively (the swap is still running). Renames another process
// has already made count as made, so two may finish the same swap.
void finish_interrupted_swap(const std::filesystem::path& table);

}  // namespace zobase
