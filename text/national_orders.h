#pragma once
// Where the national sort tables come from: the ICU locale each order was
// built from and the letters of more than one character its tables carry.
// The generator of the tables and their tests read this; the runtime needs
// only the tables themselves.
#include <string>
#include <vector>

#include "text/collation.h"

namespace zobase {

struct national_order_st {
    int group;
    const char* locale;
    std::vector<std::u16string> sequences;
};

// Spanish keeps the old ch and ll letters; ICU's traditional order has them.
// German follows the phone book (ä as ae); ICU's plain German is the root.
// Nordan is Danish, where aa is the letter å. Hungarian has more two- and
// three-letter letters in ICU than the table's 48 rows: it keeps the nine
// letters and the doubled forms except ddz, each in three cases. Where ICU's
// own sequences fall short of the table's rows (Spanish, Danish) the mixed
// form with a capital second letter fills them.
inline const std::vector<national_order_st>& national_orders() {
    static const std::vector<national_order_st> orders = {
        {COLLATION_GROUP_GENERAL, "root", {}},
        {COLLATION_GROUP_GREEK, "el", {}},
        {COLLATION_GROUP_GERMAN, "de@collation=phonebook", {}},
        {COLLATION_GROUP_POLISH, "pl", {}},
        {COLLATION_GROUP_TURKISH, "tr", {}},
        {COLLATION_GROUP_ICELAND, "is", {}},
        {COLLATION_GROUP_NORDAN, "da", {u"aa", u"Aa", u"AA", u"aA"}},
        {COLLATION_GROUP_SWEFIN, "sv", {}},
        {COLLATION_GROUP_RUSSIAN, "ru", {}},
        {COLLATION_GROUP_CZECH, "cs", {u"ch", u"cH", u"Ch", u"CH"}},
        {COLLATION_GROUP_SLOVAK, "sk", {u"ch", u"cH", u"Ch", u"CH"}},
        {COLLATION_GROUP_HUNGARY,
         "hu",
         {u"cs",  u"Cs",  u"CS",  u"dz",  u"Dz",  u"DZ",  u"gy",  u"Gy",  u"GY",  u"ly",
          u"Ly",  u"LY",  u"ny",  u"Ny",  u"NY",  u"sz",  u"Sz",  u"SZ",  u"ty",  u"Ty",
          u"TY",  u"zs",  u"Zs",  u"ZS",  u"dzs", u"Dzs", u"DZS", u"ccs", u"Ccs", u"CCS",
          u"ggy", u"Ggy", u"GGY", u"lly", u"Lly", u"LLY", u"nny", u"Nny", u"NNY", u"ssz",
          u"Ssz", u"SSZ", u"tty", u"Tty", u"TTY", u"zzs", u"Zzs", u"ZZS"}},
        {COLLATION_GROUP_SPANISH,
         "es@collation=traditional",
         {u"ch", u"Ch", u"CH", u"cH", u"ll", u"Ll", u"LL", u"lL"}},
        {COLLATION_GROUP_DUTCH, "nl", {}},
    };
    return orders;
}

// Null for the machine group and for groups without a mapped table.
inline const national_order_st* national_order(int group) {
    for (const national_order_st& o : national_orders())
        if (o.group == group) return &o;
    return nullptr;
}

}  // namespace zobase
