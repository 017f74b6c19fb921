// The fixed table of collations and the factories that make them.
#include "base/call_trace.h"
#include "text/collation.h"
#include "text/mapped_collation_tables.h"
#include "values/error.h"

namespace zobase {

namespace {

template <class T>
Collation* generic_collation_factory(const collation_st* row) {
    ZO_TRACE();
    return new T(row, get_charset_by_codepage(row->codepage, false), ' ', 1);
}

// The size is that of the collation's table in bytes; the table's extent
// must agree with it, or this does not compile.
template <uint64_t size, const collation_entry_st (&table)[size / sizeof(collation_entry_st)]>
Collation* mapped_collation_factory(const collation_st* row) {
    ZO_TRACE();
    return new Mapped_Collation(row, get_charset_by_codepage(row->codepage, false), table,
                                size / sizeof(collation_entry_st));
}

}  // namespace

const collation_st collation_table[COLLATION_ROW_COUNT] = {
    {1, "unicode_machine", 39, 1, generic_collation_factory<Unicode_Machine>},
    {1002, "unicode_machine_ci", 39, 1, generic_collation_factory<Unicode_Machine_CI>},
    {3, "ibm_437_machine", 437, 1, generic_collation_factory<Generic_Machine_Coll>},
    {16003, "ibm_437_dutch_ci", 437, 16, mapped_collation_factory<4096, ibm_437_dutch_ci_table>},
    {2003, "ibm_437_general_ci", 437, 2, mapped_collation_factory<4096, ibm_437_general_ci_table>},
    {4003, "ibm_437_german_ci", 437, 4, mapped_collation_factory<4096, ibm_437_german_ci_table>},
    {7003, "ibm_437_iceland_ci", 437, 7, mapped_collation_factory<4096, ibm_437_iceland_ci_table>},
    {8003, "ibm_437_nordan_ci", 437, 8, mapped_collation_factory<4160, ibm_437_nordan_ci_table>},
    {15003, "ibm_437_spanish_ci", 437, 15,
     mapped_collation_factory<4224, ibm_437_spanish_ci_table>},
    {9003, "ibm_437_swefin_ci", 437, 9, mapped_collation_factory<4096, ibm_437_swefin_ci_table>},
    {5, "kestro_620_machine", 620, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2005, "kestro_620_general_ci", 620, 2,
     mapped_collation_factory<4096, kestro_620_general_ci_table>},
    {5005, "kestro_620_polish_ci", 620, 5,
     mapped_collation_factory<4096, kestro_620_polish_ci_table>},
    {4, "ibm_737_machine", 737, 1, generic_collation_factory<Generic_Machine_Coll>},
    {3004, "ibm_737_greek_ci", 737, 3, mapped_collation_factory<4096, ibm_737_greek_ci_table>},
    {6, "ibm_850_machine", 850, 1, generic_collation_factory<Generic_Machine_Coll>},
    {16006, "ibm_850_dutch_ci", 850, 16, mapped_collation_factory<4096, ibm_850_dutch_ci_table>},
    {2006, "ibm_850_general_ci", 850, 2, mapped_collation_factory<4096, ibm_850_general_ci_table>},
    {7006, "ibm_850_iceland_ci", 850, 7, mapped_collation_factory<4096, ibm_850_iceland_ci_table>},
    {8006, "ibm_850_nordan_ci", 850, 8, mapped_collation_factory<4160, ibm_850_nordan_ci_table>},
    {15006, "ibm_850_spanish_ci", 850, 15,
     mapped_collation_factory<4224, ibm_850_spanish_ci_table>},
    {9006, "ibm_850_swefin_ci", 850, 9, mapped_collation_factory<4096, ibm_850_swefin_ci_table>},
    {7, "ibm_852_machine", 852, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2007, "ibm_852_general_ci", 852, 2, mapped_collation_factory<4096, ibm_852_general_ci_table>},
    {8, "ibm_857_machine", 857, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2008, "ibm_857_general_ci", 857, 2, mapped_collation_factory<4096, ibm_857_general_ci_table>},
    {6008, "ibm_857_turkish_ci", 857, 6, mapped_collation_factory<4096, ibm_857_turkish_ci_table>},
    {9, "ibm_861_machine", 861, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2009, "ibm_861_general_ci", 861, 2, mapped_collation_factory<4096, ibm_861_general_ci_table>},
    {7009, "ibm_861_iceland_ci", 861, 7, mapped_collation_factory<4096, ibm_861_iceland_ci_table>},
    {10, "ibm_865_machine", 865, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2010, "ibm_865_general_ci", 865, 2, mapped_collation_factory<4096, ibm_865_general_ci_table>},
    {8010, "ibm_865_nordan_ci", 865, 8, mapped_collation_factory<4160, ibm_865_nordan_ci_table>},
    {9010, "ibm_865_swefin_ci", 865, 9, mapped_collation_factory<4096, ibm_865_swefin_ci_table>},
    {11, "ibm_866_machine", 866, 1, generic_collation_factory<Generic_Machine_Coll>},
    {10011, "ibm_866_russian_ci", 866, 10,
     mapped_collation_factory<4096, ibm_866_russian_ci_table>},
    {12, "windows_874_machine", 874, 1, generic_collation_factory<Generic_Machine_Coll>},
    {13, "kestro_895_machine", 895, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2013, "kestro_895_general_ci", 895, 2,
     mapped_collation_factory<4096, kestro_895_general_ci_table>},
    {12013, "kestro_895_czech_ci", 895, 12,
     mapped_collation_factory<4160, kestro_895_czech_ci_table>},
    {13013, "kestro_895_slovak_ci", 895, 13,
     mapped_collation_factory<4160, kestro_895_slovak_ci_table>},
    {14, "windows_932_machine", 932, 1, generic_collation_factory<Generic_Machine_Coll>},
    {15, "windows_936_machine", 936, 1, generic_collation_factory<Generic_Machine_Coll>},
    {16, "windows_949_machine", 949, 1, generic_collation_factory<Generic_Machine_Coll>},
    {17, "windows_950_machine", 950, 1, generic_collation_factory<Generic_Machine_Coll>},
    {18, "windows_1250_machine", 1250, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2018, "windows_1250_general_ci", 1250, 2,
     mapped_collation_factory<4096, windows_1250_general_ci_table>},
    {5018, "windows_1250_polish_ci", 1250, 5,
     mapped_collation_factory<4096, windows_1250_polish_ci_table>},
    {12018, "windows_1250_czech_ci", 1250, 12,
     mapped_collation_factory<4160, windows_1250_czech_ci_table>},
    {13018, "windows_1250_slovak_ci", 1250, 13,
     mapped_collation_factory<4160, windows_1250_slovak_ci_table>},
    {14018, "windows_1250_hungary_ci", 1250, 14,
     mapped_collation_factory<4864, windows_1250_hungary_ci_table>},
    {19, "windows_1251_machine", 1251, 1, generic_collation_factory<Generic_Machine_Coll>},
    {10019, "windows_1251_russian_ci", 1251, 10,
     mapped_collation_factory<4096, windows_1251_russian_ci_table>},
    {20, "windows_1252_machine", 1252, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2020, "windows_1252_general_ci", 1252, 2,
     mapped_collation_factory<4096, windows_1252_general_ci_table>},
    {4020, "windows_1252_german_ci", 1252, 4,
     mapped_collation_factory<4096, windows_1252_german_ci_table>},
    {8020, "windows_1252_nordan_ci", 1252, 8,
     mapped_collation_factory<4160, windows_1252_nordan_ci_table>},
    {15020, "windows_1252_spanish_ci", 1252, 15,
     mapped_collation_factory<4224, windows_1252_spanish_ci_table>},
    {9020, "windows_1252_swefin_ci", 1252, 9,
     mapped_collation_factory<4096, windows_1252_swefin_ci_table>},
    {21, "windows_1253_machine", 1253, 1, generic_collation_factory<Generic_Machine_Coll>},
    {3021, "windows_1253_greek_ci", 1253, 3,
     mapped_collation_factory<4096, windows_1253_greek_ci_table>},
    {22, "windows_1254_machine", 1254, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2022, "windows_1254_general_ci", 1254, 2,
     mapped_collation_factory<4096, windows_1254_general_ci_table>},
    {6022, "windows_1254_turkish_ci", 1254, 6,
     mapped_collation_factory<4096, windows_1254_turkish_ci_table>},
    {23, "windows_1255_machine", 1255, 1, generic_collation_factory<Generic_Machine_Coll>},
    {24, "windows_1256_machine", 1256, 1, generic_collation_factory<Generic_Machine_Coll>},
    {25, "mac_10000_machine", 10000, 1, generic_collation_factory<Generic_Machine_Coll>},
    {16025, "mac_10000_dutch_ci", 10000, 16,
     mapped_collation_factory<4096, mac_10000_dutch_ci_table>},
    {2025, "mac_10000_general_ci", 10000, 2,
     mapped_collation_factory<4096, mac_10000_general_ci_table>},
    {4025, "mac_10000_german_ci", 10000, 4,
     mapped_collation_factory<4096, mac_10000_german_ci_table>},
    {8025, "mac_10000_nordan_ci", 10000, 8,
     mapped_collation_factory<4160, mac_10000_nordan_ci_table>},
    {15025, "mac_10000_spanish_ci", 10000, 15,
     mapped_collation_factory<4224, mac_10000_spanish_ci_table>},
    {9025, "mac_10000_swefin_ci", 10000, 9,
     mapped_collation_factory<4096, mac_10000_swefin_ci_table>},
    {26, "mac_10006_machine", 10006, 1, generic_collation_factory<Generic_Machine_Coll>},
    {27, "mac_10007_machine", 10007, 1, generic_collation_factory<Generic_Machine_Coll>},
    {28, "mac_10029_machine", 10029, 1, generic_collation_factory<Generic_Machine_Coll>},
    {2, "utf8_machine", 65001, 1, generic_collation_factory<Generic_Machine_Coll>},
};

const collation_group_st collation_groups[COLLATION_GROUP_COUNT] = {
    {"MACHINE", COLLATION_GROUP_MACHINE}, {"GENERAL", COLLATION_GROUP_GENERAL},
    {"GREEK", COLLATION_GROUP_GREEK},     {"GERMAN", COLLATION_GROUP_GERMAN},
    {"POLISH", COLLATION_GROUP_POLISH},   {"TURKISH", COLLATION_GROUP_TURKISH},
    {"ICELAND", COLLATION_GROUP_ICELAND}, {"NORDAN", COLLATION_GROUP_NORDAN},
    {"SWEFIN", COLLATION_GROUP_SWEFIN},   {"RUSSIAN", COLLATION_GROUP_RUSSIAN},
    {"THAI", COLLATION_GROUP_THAI},       {"CZECH", COLLATION_GROUP_CZECH},
    {"SLOVAK", COLLATION_GROUP_SLOVAK},   {"HUNGARY", COLLATION_GROUP_HUNGARY},
    {"SPANISH", COLLATION_GROUP_SPANISH}, {"DUTCH", COLLATION_GROUP_DUTCH},
};

}  // namespace zobase
