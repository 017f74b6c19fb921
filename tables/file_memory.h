#pragma once
// The memory file behind File (see file.h): 4096-byte pages, allocated on
// the first write into them, in an ordered map; bytes never written read as
// zero. Locks succeed at once, since no other process can see the file.
#include <map>
#include <memory>

#include "tables/file.h"

namespace zobase {

class FileMemory : public File {
public:
    static constexpr uint64_t PAGE_SIZE = 4096;

    // Keeps the directory and extension of `name` and names the file by its
    // own address ("%llx"), so two temporary tables never share a name.
    FileMemory(const String& name, uint32_t flags);

    std::streampos seek(std::streampos pos) override;
    std::streampos seek(int64_t offset, int origin) override;
    void write(const char* data, uint64_t size) override;
    void writeex(std::streampos pos, const char* data, uint64_t size) override;
    uint64_t read(char* data, uint64_t size) override;
    uint64_t readex(std::streampos pos, char* data, uint64_t size) override;
    std::streampos tell() override;
    void close() override {}
    void remove() override {}
    bool lock(std::streampos, uint64_t) override { return true; }
    bool unlock(std::streampos, uint64_t) override { return true; }
    int64_t size() override { return static_cast<int64_t>(size_); }
    // Pages past the end go; the rest of the last page reads as zero again.
    void truncate(uint64_t size) override;
    int64_t modified_time() override { return modified_; }
    int64_t created_time() override { return created_; }

    size_t page_count() const noexcept { return pages_.size(); }

private:
    char* page_for_write(uint64_t number);

    uint64_t size_ = 0;  // the highest position ever written
    int64_t modified_ = 0;
    int64_t created_ = 0;
    uint64_t position_ = 0;
    std::map<uint64_t, std::unique_ptr<char[]>> pages_;
};

}  // namespace zobase
