#include "values/symtable.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "values/error.h"

namespace zobase {
namespace {

String utf16le(const std::u16string& text) {
    __init_collations();
    return String::fromBytes(reinterpret_cast<const char*>(text.data()), text.size() * 2,
                             Charset::utf16le);
}

TEST(SymtableFixed, NamesHaveTheirIdsInAnyCase) {
    Symtable table;
    EXPECT_EQ(table.symbolize("this"), 1u);
    EXPECT_EQ(table.symbolize("THIS"), 1u);
    EXPECT_EQ(table.symbolize("ThisForm"), unsigned(SYMBOL_THISFORM));
    EXPECT_EQ(table.symbolize("[]"), 6u);
    EXPECT_EQ(table.symbolize("__zo__"), 80u);
    EXPECT_EQ(table.symbolize("Currency"), 100u);
    EXPECT_EQ(table.symbolize("get_enumerator"), 94u);
    EXPECT_EQ(table.resolve(6).u8str(), "[]");
    EXPECT_EQ(table.resolve(SYMBOL_LINE).u8str(), "__LINE__");
}

TEST(SymtableFixed, UnnamedAndUnissuedIdsAreAssertions) {
    Symtable table;
    EXPECT_THROW(table.resolve(0), assert_failed_exception);
    EXPECT_THROW(table.resolve(9), assert_failed_exception);
    EXPECT_THROW(table.resolve(65), assert_failed_exception);
    EXPECT_THROW(table.resolve(101), assert_failed_exception);
}

TEST(SymtableInterning, NewNamesStartAboveTheFixedIds) {
    Symtable table;
    unsigned first = table.symbolize("lnCounter");
    EXPECT_EQ(first, 101u);
    EXPECT_EQ(table.symbolize("lnCounter"), first);
    EXPECT_EQ(table.symbolize("LNCOUNTER"), first);
    EXPECT_EQ(table.symbolize("lnOther"), 102u);
}

TEST(SymtableInterning, FirstSpellingIsKept) {
    Symtable table;
    unsigned id = table.symbolize("MyVar");
    table.symbolize("MYVAR");
    EXPECT_EQ(table.resolve(id).u8str(), "MyVar");
}

TEST(SymtableInterning, CaseFoldsBeyondAsciiAndAcrossCharsets) {
    Symtable table;
    unsigned id = table.symbolize("\xC3\xA4pfel");  // äpfel
    EXPECT_EQ(table.symbolize("\xC3\x84PFEL"), id);  // ÄPFEL
    EXPECT_EQ(table.symbolize(utf16le(u"\u00C4pFeL")), id);
    EXPECT_EQ(table.symbolize(utf16le(u"This")), 1u);
}

TEST(SymtableInterning, IdsStayStableWhileTheMapsGrow) {
    Symtable table;
    std::vector<unsigned> ids;
    for (int i = 0; i < 2000; ++i)
        ids.push_back(table.symbolize(("name" + std::to_string(i)).c_str()));
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(ids[i], 101u + i);
        std::string upper = "NAME" + std::to_string(i);
        ASSERT_EQ(table.symbolize(upper.c_str()), ids[i]);
        ASSERT_EQ(table.resolve(ids[i]).u8str(), "name" + std::to_string(i));
    }
    EXPECT_EQ(table.symbolize("this"), 1u);
}

TEST(SymtableInterning, TablesAreIndependent) {
    Symtable a;
    Symtable b;
    EXPECT_EQ(a.symbolize("onlyInA"), 101u);
    EXPECT_EQ(b.symbolize("onlyInB"), 101u);
    EXPECT_EQ(a.resolve(101).u8str(), "onlyInA");
    EXPECT_EQ(b.resolve(101).u8str(), "onlyInB");
}

}  // namespace
}  // namespace zobase
