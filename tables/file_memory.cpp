#include "tables/file_memory.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>

namespace zobase {

namespace {

// "memory:///dir/stem.ext" with the stem replaced.
std::string with_stem(const std::string& name, const std::string& stem) {
    size_t slash = name.rfind('/');
    size_t stem_start = slash == std::string::npos ? 0 : slash + 1;
    size_t dot = name.rfind('.');
    std::string extension = dot != std::string::npos && dot >= stem_start ? name.substr(dot) : "";
    return name.substr(0, stem_start) + stem + extension;
}

}  // namespace

FileMemory::FileMemory(const String& name, uint32_t flags)
    : File(String(), flags | FILE_OPEN_READ | FILE_OPEN_WRITE) {
    char stem[32];
    std::snprintf(stem, sizeof stem, "%llx",
                  static_cast<unsigned long long>(reinterpret_cast<uintptr_t>(this)));
    this->name = String(with_stem(name.u8str(), stem).c_str());
}

std::streampos FileMemory::seek(std::streampos pos) {
    position_ = static_cast<uint64_t>(file_offset(pos));
    return pos;
}

std::streampos FileMemory::seek(int64_t offset, int origin) {
    switch (origin) {
    case FILE_SEEK_START: position_ = static_cast<uint64_t>(offset); break;
    case FILE_SEEK_CURRENT: position_ += static_cast<uint64_t>(offset); break;
    case FILE_SEEK_END: position_ = size_ + static_cast<uint64_t>(offset); break;
    default: throw assert_failed_exception("memory file seek origin");
    }
    return static_cast<std::streamoff>(position_);
}

std::streampos FileMemory::tell() { return static_cast<std::streamoff>(position_); }

char* FileMemory::page_for_write(uint64_t number) {
    std::unique_ptr<char[]>& page = pages_[number];
    if (!page) page.reset(new char[PAGE_SIZE]());
    return page.get();
}

// Walks page by page; even a write of no bytes touches the page at its
// position, and the size grows to the end of every piece written.
void FileMemory::writeex(std::streampos pos, const char* data, uint64_t size) {
    int64_t start = file_offset(pos);
    if (start < 0) throw file_write_failed();
    uint64_t at = static_cast<uint64_t>(start);
    do {
        uint64_t in_page = at % PAGE_SIZE;
        uint64_t piece = std::min(size, PAGE_SIZE - in_page);
        char* page = page_for_write(at / PAGE_SIZE);
        if (piece) std::memcpy(page + in_page, data, piece);
        at += piece;
        data += piece;
        size -= piece;
        size_ = std::max(size_, at);
    } while (size > 0);
}

uint64_t FileMemory::readex(std::streampos pos, char* data, uint64_t size) {
    int64_t start = file_offset(pos);
    if (start < 0) throw file_read_failed();
    uint64_t at = static_cast<uint64_t>(start);
    if (at >= size_) return 0;
    uint64_t total = std::min(size, size_ - at);
    for (uint64_t done = 0; done < total;) {
        uint64_t in_page = at % PAGE_SIZE;
        uint64_t piece = std::min(total - done, PAGE_SIZE - in_page);
        auto page = pages_.find(at / PAGE_SIZE);
        if (page == pages_.end())
            std::memset(data + done, 0, piece);
        else
            std::memcpy(data + done, page->second.get() + in_page, piece);
        at += piece;
        done += piece;
    }
    return total;
}

void FileMemory::write(const char* data, uint64_t size) {
    writeex(static_cast<std::streamoff>(position_), data, size);
    position_ += size;
}

uint64_t FileMemory::read(char* data, uint64_t size) {
    uint64_t n = readex(static_cast<std::streamoff>(position_), data, size);
    position_ += n;
    return n;
}

void FileMemory::truncate(uint64_t size) {
    if (size >= size_) return;
    uint64_t first_gone = (size + PAGE_SIZE - 1) / PAGE_SIZE;
    pages_.erase(pages_.lower_bound(first_gone), pages_.end());
    auto last = pages_.find(size / PAGE_SIZE);
    if (last != pages_.end()) std::memset(last->second.get() + size % PAGE_SIZE, 0, PAGE_SIZE - size % PAGE_SIZE);
    size_ = size;
}

}  // namespace zobase
