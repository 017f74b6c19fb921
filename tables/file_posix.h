#pragma once
// The operating system file behind File (see file.h for the contract).
#include <string>

#include "tables/file.h"

namespace zobase {

class FilePosix : public File {
public:
    static FilePosix* create(const String& name, uint32_t flags);
    static FilePosix* open(const String& name, uint32_t flags);
    ~FilePosix() override;

    std::streampos seek(std::streampos pos) override;
    std::streampos seek(int64_t offset, int origin) override;
    void write(const char* data, uint64_t size) override;
    void writeex(std::streampos pos, const char* data, uint64_t size) override;
    uint64_t read(char* data, uint64_t size) override;
    uint64_t readex(std::streampos pos, char* data, uint64_t size) override;
    std::streampos tell() override;
    void close() override;
    void remove() override;
    bool lock(std::streampos pos, uint64_t size) override;
    bool unlock(std::streampos pos, uint64_t size) override;
    int64_t size() override;
    void truncate(uint64_t size) override;
    int64_t modified_time() override;
    int64_t created_time() override;
    // A read-only shared mapping of the file, made again when the file has
    // grown by a good part since; dropped when the file is cut or closed.
    const char* view(uint64_t position, uint64_t size, bool may_map = true) override;

private:
    void unmap() noexcept;

    FilePosix(const String& file_name, uint32_t open_flags, int descriptor,
              bool read_only_descriptor, bool delete_on_close);

    int fd_;
    std::string path_;
    // The system let the file be opened for reading only; its locks are then
    // read locks, which still exclude every writer's lock.
    bool read_only_fd_;
    bool delete_on_close_;
    char* map_ = nullptr;
    uint64_t mapped_ = 0;
};

}  // namespace zobase
