// Array functions: alen, ascan, asort, acopy, adel, aelement, asubscript,
// alines, aenv and array. Element numbers count from 1 in storage order, row
// after row; a subscript outside the array is 1234, a bad option 11.
#include <algorithm>
#include <cstring>
#include <vector>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/array_helpers.h"
#include "builtins/handlers.h"
#include "vm/runtime_services.h"
#include "vm/variant_compare.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

// The families of values that compare with each other; 0 compares with nothing.
enum ValueFamily { FAMILY_NONE, FAMILY_LOGICAL, FAMILY_NUMBER, FAMILY_DATE, FAMILY_DATETIME,
                   FAMILY_STRING, FAMILY_OBJECT, FAMILY_ARRAY };

ValueFamily family_of(const Variant& value) {
    switch (value.tag) {
    case TAG_FALSE:
    case TAG_TRUE: return FAMILY_LOGICAL;
    case TAG_INTEGER:
    case TAG_NUMERIC:
    case TAG_MONEY: return FAMILY_NUMBER;
    case TAG_DATE: return FAMILY_DATE;
    case TAG_DATETIME: return FAMILY_DATETIME;
    case TAG_STRING: return FAMILY_STRING;
    case TAG_OBJECT: return FAMILY_OBJECT;
    case TAG_ARRAY: return FAMILY_ARRAY;
    default: return FAMILY_NONE;
    }
}

// ascan's test: the = operator of the language, strings under SET EXACT, but
// a value of another family is simply no match.
bool scan_matches(VmStack* stack, const Variant& element, const Variant& wanted) {
    ValueFamily family = family_of(element);
    if (family == FAMILY_NONE || family == FAMILY_ARRAY || family != family_of(wanted)) return false;
    bool null_seen = false;
    return inline_variant_cmp(&element, &wanted, &null_seen, stack) == 0 && !null_seen;
}

// asort's order: null, logicals, numbers, dates, datetimes, strings, objects,
// arrays; strings compare whole, without SET EXACT, so the order is total.
int sort_compare(const Variant& a, const Variant& b) {
    int rank_a = a.tag == TAG_NULL ? -1 : family_of(a);
    int rank_b = b.tag == TAG_NULL ? -1 : family_of(b);
    if (rank_a != rank_b) return rank_a < rank_b ? -1 : 1;
    switch (rank_a) {
    case FAMILY_LOGICAL: return (a.tag > b.tag) - (a.tag < b.tag);
    case FAMILY_NUMBER:
    case FAMILY_DATE:
    case FAMILY_DATETIME:
    case FAMILY_STRING: {
        bool null_seen = false;
        return inline_variant_cmp(&a, &b, &null_seen, nullptr);
    }
    default: return 0;
    }
}

// The element number of argument `i`, which must lie within the array.
uint64_t element_argument(VmStack* stack, unsigned long long i, const Array& array) {
    long long n = argument(stack, i).integer;
    if (n < 1 || static_cast<uint64_t>(n) > array.count) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
    return static_cast<uint64_t>(n);
}

// Moves whole rows of `width` elements, from `first_row` (0-based) on, into
// the order given; the values move bitwise, so ownership stays as it was.
void permute_rows(Array& array, uint64_t width, uint64_t first_row, const std::vector<uint64_t>& order) {
    Variant* base = array.storage->elements + first_row * width;
    std::vector<Variant> moved(order.size() * width);
    for (size_t i = 0; i < order.size(); ++i)
        std::memcpy(static_cast<void*>(&moved[i * width]), base + (order[i] - first_row) * width,
                    width * sizeof(Variant));
    std::memcpy(static_cast<void*>(base), moved.data(), moved.size() * sizeof(Variant));
}

// alines' option bits.
enum AlinesFlag {
    ALINES_TRIM = 1,
    ALINES_KEEP_LAST_EMPTY = 2,
    ALINES_SKIP_EMPTY = 4,
    ALINES_IGNORE_CASE = 8,
    ALINES_KEEP_SEPARATOR = 16,
};
constexpr long long ALINES_ALL_FLAGS = 31;

struct alines_cut_st {
    const String* original;  // pieces are cut from it; the search may run on a lowered copy
    const char* searched_begin;
    const char* piece_begin;
    bool keep_separator;
    std::vector<String>* pieces;
};

String piece_of(const alines_cut_st& cut, const char* begin, const char* end) {
    const char* base = cut.original->read();
    return String(*cut.original, base + (begin - cut.searched_begin), base + (end - cut.searched_begin));
}

bool cut_line(const String&, const char* begin, const char* end, size_t, size_t, size_t, void* context) {
    auto* cut = static_cast<alines_cut_st*>(context);
    cut->pieces->push_back(piece_of(*cut, cut->piece_begin, cut->keep_separator ? end : begin));
    cut->piece_begin = end;
    return true;
}

// The pieces of the text, the last one included even when empty. Without
// separators of its own a line ends at CR LF, CR or LF.
std::vector<String> split_lines(const String& text, const std::vector<String>& separators, long long flags) {
    static const String default_separators[] = {String("\r\n"), String("\r"), String("\n")};
    std::vector<const_string_st> needles;
    std::vector<String> lowered;
    bool ignore_case = (flags & ALINES_IGNORE_CASE) != 0;
    const String* list = separators.empty() ? default_separators : separators.data();
    size_t count = separators.empty() ? 3 : separators.size();
    for (size_t i = 0; i < count; ++i) {
        if (list[i].size() == 0) continue;
        lowered.push_back(ignore_case ? list[i].lower() : list[i]);
    }
    for (const String& needle : lowered) needles.push_back(needle.as_const());
    // Lower case that keeps every byte offset lets the pieces come from the original.
    String searched = ignore_case ? text.lower() : text;
    const String& source = searched.size() == text.size() ? text : searched;
    std::vector<String> pieces;
    alines_cut_st cut{&source, searched.read(), searched.read(), (flags & ALINES_KEEP_SEPARATOR) != 0, &pieces};
    size_t chars = 0;
    if (!needles.empty()) searched.scan(needles.data(), needles.size(), chars, cut_line, &cut);
    pieces.push_back(piece_of(cut, cut.piece_begin, searched.end()));
    return pieces;
}

std::vector<String> alines_pieces(const String& text, const std::vector<String>& separators, long long flags) {
    std::vector<String> pieces = split_lines(text, separators, flags);
    if (!(flags & ALINES_KEEP_LAST_EMPTY) && pieces.back().size() == 0) pieces.pop_back();
    std::vector<String> kept;
    for (String& piece : pieces) {
        if (flags & ALINES_TRIM) piece.alltrim();
        if ((flags & ALINES_SKIP_EMPTY) && piece.size() == 0) continue;
        kept.push_back(piece);
    }
    return kept;
}

}  // namespace

void stackcall_alen(VmStack* stack, unsigned long long argc, Variant* result) {
    const Array& array = argument(stack, 1).array;
    long long which = argc >= 2 ? argument(stack, 2).integer : 0;
    switch (which) {
    case 0: return result->set_integer(static_cast<long long>(array.count));
    case 1: return result->set_integer(static_cast<long long>(array.rows()));
    case 2: return result->set_integer(static_cast<long long>(array.columns));
    default: throw RuntimeError(ERR_ARGUMENT_INVALID);
    }
}

// The first element from `start` on that equals the value, or 0.
void stackcall_ascan(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const Array& array = argument(stack, 1).array;
    const Variant& wanted = argument(stack, 2);
    uint64_t start = 1;
    if (argc >= 3) {
        if (array.count == 0) return result->set_integer(0);
        start = element_argument(stack, 3, array);
    }
    for (uint64_t i = start; i <= array.count; ++i)
        if (scan_matches(stack, *array.read(i), wanted)) return result->set_integer(static_cast<long long>(i));
    result->set_integer(0);
}

// asort(a [, start]): a one-dimensional array sorts its elements from
// `start` on; a two-dimensional one its rows from the row of element `start`,
// by the column of that element. A negative start sorts descending. Stable.
void stackcall_asort(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    Array& array = Param(stack, 1)->follow()->array;
    long long start = argc >= 2 ? argument(stack, 2).integer : 1;
    bool descending = start < 0;
    uint64_t element = static_cast<uint64_t>(descending ? -start : start);
    if (array.count == 0 && element == 1) return result->set_integer(1);
    if (element < 1 || element > array.count) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
    array.write(stack, 1);  // sorting writes: a shared storage is copied first
    uint64_t width = array.columns ? array.columns : 1;
    uint64_t first_row = array.asubscript_row(element) - 1;
    uint64_t key_column = array.columns ? array.asubscript_column(element) - 1 : 0;
    std::vector<uint64_t> order;
    for (uint64_t row = first_row; row < array.rows(); ++row) order.push_back(row);
    const Variant* elements = array.storage->elements;
    std::stable_sort(order.begin(), order.end(), [&](uint64_t a, uint64_t b) {
        int c = sort_compare(elements[a * width + key_column], elements[b * width + key_column]);
        return descending ? c > 0 : c < 0;
    });
    permute_rows(array, width, first_row, order);
    result->set_integer(1);
}

// acopy(source, @target [, first [, count [, target_first]]]): a count of -1
// copies to the end. A target that is no array takes the source's shape; one
// too small grows (by rows when it has two dimensions).
void stackcall_acopy(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    const Array& source = argument(stack, 1).array;
    uint64_t first = argc >= 3 ? element_argument(stack, 3, source) : 1;
    long long count = argc >= 4 ? argument(stack, 4).integer : -1;
    uint64_t available = source.count >= first ? source.count - first + 1 : 0;
    if (count == -1) count = static_cast<long long>(available);
    if (count < 0 || static_cast<uint64_t>(count) > available) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
    long long target_first = argc >= 5 ? argument(stack, 5).integer : 1;
    if (target_first < 1) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);

    Variant* target = Param(stack, 2)->follow();
    if (target->tag != TAG_ARRAY) target->dimension(stack, source.rows(), source.columns);
    uint64_t needed = static_cast<uint64_t>(target_first) - 1 + static_cast<uint64_t>(count);
    grow_to_hold(stack, target, needed);
    for (long long k = 0; k < count; ++k)
        store_element(stack, &target->array, static_cast<uint64_t>(target_first + k),
                      *source.read(first + static_cast<uint64_t>(k)));
    result->set_integer(count);
}

// adel(@a, n): removes element n (a row of a two-dimensional array); what
// follows moves up and the freed end becomes false. The size stays.
void stackcall_adel(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    Array& array = Param(stack, 1)->follow()->array;
    long long n = argument(stack, 2).integer;
    if (n < 1 || static_cast<uint64_t>(n) > array.rows()) throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
    array.write(stack, 1);
    uint64_t width = array.columns ? array.columns : 1;
    Variant* removed = array.storage->elements + (static_cast<uint64_t>(n) - 1) * width;
    for (uint64_t i = 0; i < width; ++i) removed[i].release(stack);
    Variant* end = array.storage->elements + array.count;
    std::memmove(static_cast<void*>(removed), removed + width,
                 static_cast<size_t>(end - (removed + width)) * sizeof(Variant));
    for (Variant* slot = end - width; slot < end; ++slot) slot->tag = TAG_FALSE;
    result->set_true();
}

// aelement(a, row [, column]): the element number of a subscript pair; a
// single subscript is an element number itself.
void stackcall_aelement(VmStack* stack, unsigned long long argc, Variant* result) {
    const Array& array = argument(stack, 1).array;
    if (argc < 3) return result->set_integer(static_cast<long long>(element_argument(stack, 2, array)));
    long long row = argument(stack, 2).integer;
    long long column = argument(stack, 3).integer;
    uint64_t width = array.columns ? array.columns : 1;
    if (row < 1 || column < 1 || static_cast<uint64_t>(row) > array.rows() ||
        static_cast<uint64_t>(column) > width)
        throw RuntimeError(ERR_SUBSCRIPT_OUT_OF_RANGE);
    result->set_integer((row - 1) * static_cast<long long>(width) + column);
}

// asubscript(a, n, 1) is the row of element n, asubscript(a, n, 2) its
// column; a one-dimensional array has no column (11).
void stackcall_asubscript(VmStack* stack, unsigned long long, Variant* result) {
    const Array& array = argument(stack, 1).array;
    uint64_t element = element_argument(stack, 2, array);
    long long which = argument(stack, 3).integer;
    if (which == 1) return result->set_integer(static_cast<long long>(array.asubscript_row(element)));
    if (which == 2 && array.columns)
        return result->set_integer(static_cast<long long>(array.asubscript_column(element)));
    throw RuntimeError(ERR_ARGUMENT_INVALID);
}

// alines(@a, text [, flags [, separator ...]]): the lines of the text as a
// one-dimensional array; returns their count.
void stackcall_alines(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    long long flags = argc >= 3 ? argument(stack, 3).integer : 0;
    if (flags < 0 || flags > ALINES_ALL_FLAGS) throw RuntimeError(ERR_ARGUMENT_INVALID);
    std::vector<String> separators;
    for (unsigned long long i = 4; i <= argc; ++i) separators.push_back(string_argument(stack, i));
    std::vector<String> lines = alines_pieces(string_argument(stack, 2), separators, flags);
    fill_column(stack, Param(stack, 1), lines);
    result->set_integer(static_cast<long long>(lines.size()));
}

// aenv(@a): the environment as rows of name and value, ordered by name.
void stackcall_aenv(VmStack* stack, unsigned long long, Variant* result) {
    ZO_TRACE();
    std::vector<std::pair<String, String>> variables;
    if (stack->services) variables = stack->services->environment();
    Array* array = Param(stack, 1)->dimension(stack, variables.size(), 2);
    for (uint64_t row = 1; row <= variables.size(); ++row) {
        store_string(stack, array, (row - 1) * 2 + 1, variables[row - 1].first);
        store_string(stack, array, (row - 1) * 2 + 2, variables[row - 1].second);
    }
    result->set_integer(static_cast<long long>(variables.size()));
}

// array(v1, v2, ...): a one-dimensional array of the values.
void stackcall_array(VmStack* stack, unsigned long long argc, Variant* result) {
    Array array = Array::create(argc, 0);
    for (unsigned long long i = 1; i <= argc; ++i) array.storage->elements[i - 1].set_variant(&argument(stack, i));
    result->tag = TAG_ARRAY;
    result->array = array;
}

}  // namespace zobase
