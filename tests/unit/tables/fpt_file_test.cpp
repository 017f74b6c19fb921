#include <gtest/gtest.h>

#include <memory>

#include "tables/byte_order.h"
#include "tables/fpt_file.h"
#include "tests/unit/tables/table_test_support.h"
#include "text/charset.h"
#include "values/variant.h"

namespace zobase {
namespace {

using testing::TableFolder;

std::unique_ptr<FptFile> memory_memo(int block_size) {
    return std::unique_ptr<FptFile>(
        FptFile::create(create_file(String("memory:///m.fpt"), FILE_OPEN_TEMPORARY), block_size));
}

std::string text_at(FptFile* fpt, unsigned block) {
    int type = 0;
    return fpt->load(block, Charset::utf8, &type).u8str();
}

TEST(FptFile, BlockSizeDecidesTheFirstDataBlock) {
    auto standard = memory_memo(0);
    EXPECT_EQ(standard->block_size, 64u);
    EXPECT_EQ(standard->next_free_block, 8u);
    EXPECT_EQ(standard->file->size(), 512);
    auto odd = memory_memo(33);
    EXPECT_EQ(odd->next_free_block, 16u);
    EXPECT_EQ(odd->file->size(), 528);
    auto large = memory_memo(1024);
    EXPECT_EQ(large->next_free_block, 1u);
    EXPECT_EQ(large->file->size(), 1024);
    // The header keeps 16 bits of the size: 70000 reads back as another
    // size, and the largest, cut to 0x100000, as none at all.
    EXPECT_EQ(memory_memo(70000)->block_size, 70000u & 0xFFFF);
    EXPECT_THROW(memory_memo(0x200000), dbf_error_file_corruption);

    char header[8];
    standard->file->readex(0, header, 8);
    EXPECT_EQ(read_be32(header), 8u);
    EXPECT_EQ(read_be16(header + 4), 0u);
    EXPECT_EQ(read_be16(header + 6), 64u);
}

// Each body takes whole blocks after an 8-byte head of type and length.
TEST(FptFile, BodiesTakeWholeBlocksAndAreNeverReused) {
    auto fpt = memory_memo(64);
    unsigned empty = fpt->store(String(""), Charset::utf8, 1);
    EXPECT_EQ(empty, 8u);
    EXPECT_EQ(fpt->next_free_block, 9u);
    std::string long_text(200, 'x');
    unsigned spanning = fpt->store(String(long_text.c_str()), Charset::utf8, 1);
    EXPECT_EQ(spanning, 9u);
    EXPECT_EQ(fpt->next_free_block, 13u);
    EXPECT_EQ(text_at(fpt.get(), spanning), long_text);
    EXPECT_EQ(fpt->body_length(spanning), 200u);
    EXPECT_EQ(text_at(fpt.get(), empty), "");

    char head[8];
    fpt->file->readex(spanning * 64, head, 8);
    EXPECT_EQ(read_be32(head), 1u);
    EXPECT_EQ(read_be32(head + 4), 200u);
    // Written again, a value lands in new blocks and the old one stays.
    unsigned again = fpt->store(String("short"), Charset::utf8, 5);
    EXPECT_EQ(again, 13u);
    EXPECT_EQ(text_at(fpt.get(), spanning), long_text);
    int type = 0;
    fpt->load(again, Charset::utf8, &type);
    EXPECT_EQ(type, 1);
}

TEST(FptFile, ValuesAreStoredInTheCharsetAsked) {
    auto fpt = memory_memo(64);
    const Charset* cp1252 = get_charset_by_codepage(1252, false);
    unsigned block = fpt->store(String("Grüße"), cp1252, 1);
    EXPECT_EQ(fpt->body_length(block), 5u);
    int type = 0;
    String back = fpt->load(block, cp1252, &type);
    EXPECT_EQ(back.get_charset(), cp1252);
    EXPECT_EQ(back.u8str(), "Grüße");
    EXPECT_THROW(fpt->store(String("Ω"), cp1252, 1), dbf_error_cptrans_char_lost);
}

TEST(FptFile, BlocksPastTheEndReadWhatIsThere) {
    auto fpt = memory_memo(64);
    EXPECT_EQ(text_at(fpt.get(), 1000), "");
    // A length word that claims more than the file holds.
    char head[8];
    write_be32(head, 1);
    write_be32(head + 4, 0xFFFFFFF0);
    fpt->file->writeex(8 * 64, head, 8);
    fpt->file->writeex(8 * 64 + 8, "abc", 3);
    EXPECT_EQ(text_at(fpt.get(), 8), "abc");
}

TEST(FptFile, RefusesFilesThatAreNotEmptyAndHeadersThatAreCut) {
    File* used = create_file(String("memory:///u.fpt"), 0);
    used->writeex(0, "x", 1);
    EXPECT_THROW(FptFile::create(used, 64), fpt_error_file_exists);
    FptFile cut(create_file(String("memory:///c.fpt"), 0));
    cut.file->writeex(0, "1234567", 7);
    EXPECT_THROW(cut.open(), dbf_error_file_corruption);
    FptFile zero_blocks(create_file(String("memory:///z.fpt"), 0));
    zero_blocks.file->writeex(0, std::string(8, '\0').data(), 8);
    EXPECT_THROW(zero_blocks.open(), dbf_error_file_corruption);
}

// Two writers of one shared memo file take turns through the allocation
// lock and the header, so their bodies never overlap.
TEST(FptFile, SharedWritersAllocateInTurn) {
    TableFolder folder;
    delete FptFile::create(create_file(folder.name("s.fpt"), 0), 64);
    uint32_t shared = FILE_OPEN_READ | FILE_OPEN_WRITE | FILE_OPEN_SHARED;
    FptFile first(open_file(folder.name("s.fpt"), shared));
    FptFile second(open_file(folder.name("s.fpt"), shared));
    first.open();
    second.open();
    unsigned a = first.store(String("from the first"), Charset::utf8, 1);
    unsigned b = second.store(String("from the second"), Charset::utf8, 1);
    unsigned c = first.store(String("first again"), Charset::utf8, 1);
    EXPECT_EQ(a, 8u);
    EXPECT_EQ(b, 9u);
    EXPECT_EQ(c, 10u);
    EXPECT_EQ(text_at(&second, a), "from the first");
    EXPECT_EQ(text_at(&first, b), "from the second");
}

}  // namespace
}  // namespace zobase
