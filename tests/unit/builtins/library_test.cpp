#include <gtest/gtest.h>

#include "builtins/library.h"
#include "values/symtable.h"
#include "values/variant.h"
#include "vm/vm_stack.h"

using namespace zobase;

namespace {

const Library& core_library() {
    static Library* library = [] {
        static Symtable symbols;
        auto* l = new Library(nullptr, &symbols);
        load_library_tables(l, core_module_description());
        return l;
    }();
    return *library;
}

const library_func_def_st* find(const char* spelling) {
    return core_library().find_function(String(spelling));
}

std::string error_text_of_call(native_function handler) {
    VmStack stack(nullptr, 16, 4);
    Variant result;
    try {
        handler(&stack, 0, &result);
    } catch (const RuntimeError& e) {
        return std::to_string(e.number) + " " + e.message.u8str();
    }
    return "no error";
}

}  // namespace

TEST(LibraryTables, CoreRowCounts) {
    EXPECT_EQ(row_count(core_function_rows), 255u);
    EXPECT_EQ(row_count(core_command_rows), 74u);
    EXPECT_EQ(row_count(core_system_variable_rows), 85u);
    EXPECT_EQ(core_library().functions.size(), 255u);
    EXPECT_EQ(core_library().commands.size(), 74u);
    EXPECT_EQ(core_library().variable_readers.size(), 85u);
    EXPECT_EQ(core_library().variable_writers.size(), 85u);
    EXPECT_EQ(core_library().compile_hooks.size(), 7u);
}

TEST(LibraryTables, AbbreviationsFromTheMinimumLength) {
    const library_func_def_st* substr = find("substr");
    ASSERT_NE(substr, nullptr);
    EXPECT_EQ(find("subs"), substr);
    EXPECT_EQ(find("SUBS"), substr);
    EXPECT_EQ(find("SuBsTr"), substr);
    EXPECT_EQ(find("sub"), nullptr);
    EXPECT_EQ(find("substrx"), nullptr);
    for (const char* spelling : {"allt", "alltr", "alltri", "alltrim"})
        EXPECT_EQ(find(spelling), find("alltrim")) << spelling;
    EXPECT_EQ(find("all"), nullptr);
    EXPECT_EQ(find("strto"), find("strtofile"));
    EXPECT_EQ(find("strt"), find("strtran"));  // strtran (4) came first
    EXPECT_EQ(find("strtof"), find("strtofile"));
}

TEST(LibraryTables, NamesWithoutAbbreviation) {
    EXPECT_EQ(find("lef"), nullptr);
    EXPECT_EQ(find("rtri"), nullptr);
    EXPECT_EQ(find("tri"), nullptr);
    ASSERT_NE(find("trim"), nullptr);
    EXPECT_EQ(find("trim")->name.u8str(), "trim");
    EXPECT_EQ(find("rtrim")->name.u8str(), "rtrim");
    // "sec" is a function of its own, not an abbreviation of "seconds".
    EXPECT_EQ(find("sec")->name.u8str(), "sec");
    EXPECT_EQ(find("seco")->name.u8str(), "seconds");
}

TEST(LibraryTables, DottedNamesAndSharedHandlers) {
    ASSERT_NE(find("HTTP.URLENCODE"), nullptr);
    ASSERT_NE(find("json.encode"), nullptr);
    EXPECT_EQ(find("json.encode")->name.u8str(), "Json.Encode");
    EXPECT_EQ(find("at")->handler, find("at_c")->handler);
    EXPECT_EQ(find("substr")->handler, find("substrc")->handler);
    EXPECT_EQ(find("rtrim")->handler, find("trim")->handler);
    EXPECT_EQ(find("len")->handler, find("lenc")->handler);
    EXPECT_NE(find("ltrim")->handler, find("rtrim")->handler);
}

TEST(LibraryTables, FirstFunctionKeepsASharedSpelling) {
    static const library_function_row_st rows[] = {
        {"alpha", "", function_not_available<"alpha">, "L", 3},
        {"alpine", "", function_not_available<"alpine">, "L", 3},
        {"alp", "", function_not_available<"alp">, "L", 0},
        {nullptr, nullptr, nullptr, nullptr, 0},
    };
    static const module_description_st description = {nullptr, nullptr, rows, nullptr,
                                                      nullptr, nullptr, nullptr};
    Library library;
    load_library_tables(&library, &description);
    EXPECT_EQ(library.find_function(String("alp"))->name.u8str(), "alpha");
    EXPECT_EQ(library.find_function(String("alpi"))->name.u8str(), "alpine");
    EXPECT_EQ(library.functions.size(), 3u);
}

TEST(LibraryTables, EmptyDescriptionAndAttachOrder) {
    static const module_description_st empty = {nullptr, nullptr, nullptr, nullptr,
                                                nullptr, nullptr, nullptr};
    Library library;
    EXPECT_NO_THROW(load_library_tables(&library, &empty));
    EXPECT_TRUE(library.functions.empty());

    static size_t functions_seen_by_attach;
    static Library* attached;
    static const library_function_row_st rows[] = {
        {"one", "", function_not_available<"one">, "L", 0},
        {nullptr, nullptr, nullptr, nullptr, 0},
    };
    static const module_description_st described = {
        [](Runtime*) { functions_seen_by_attach = attached->functions.size(); },
        [](Runtime*) { functions_seen_by_attach = 99; }, rows, nullptr, nullptr, nullptr, nullptr};
    Library second;
    attached = &second;
    load_library_tables(&second, &described);
    EXPECT_EQ(functions_seen_by_attach, 1u);
    unload_library_tables(&second);
    EXPECT_EQ(functions_seen_by_attach, 99u);
}

TEST(LibraryTables, PendingHandlersNameTheirFunction) {
    EXPECT_EQ(error_text_of_call(find("syntaxinfo")->handler),
              "1001 Feature 'syntaxinfo' is not available.");
    EXPECT_EQ(error_text_of_call(find("__debugbreak")->handler),
              "1001 Feature '__debugbreak' is not available.");
    const library_command_def_st* browse = core_library().find_command(String("BROWSE"));
    ASSERT_NE(browse, nullptr);
    VmStack stack(nullptr, 16, 4);
    try {
        browse->handler(&stack, 0);
        FAIL() << "browse is not built yet";
    } catch (const RuntimeError& e) {
        EXPECT_EQ(e.message.u8str(), "Feature 'browse' is not available.");
    }
}

TEST(LibraryTables, SignaturesOfRegisteredRows) {
    const library_func_def_st* at = find("at");
    EXPECT_EQ(at->parameters.formals.size(), 3u);
    EXPECT_EQ(at->parameters.required, 2u);
    EXPECT_EQ(at->result.formals[0].type, FORMAL_INTEGER | FORMAL_NULLABLE);
    const library_command_def_st* use = core_library().find_command(String("use"));
    EXPECT_EQ(use->parameters.formals.size(), 5u);
    EXPECT_EQ(use->parameters.formals[0].type, FORMAL_INTEGER);
    EXPECT_EQ(use->parameters.formals[1].type, FORMAL_STRING | FORMAL_NULLABLE);
}

TEST(SignatureParser, EveryLetter) {
    function_signature_st s = parse_function_signature(".LINYDTCOA");
    const uint8_t expected[] = {0, 1, 5, 6, 7, 8, 9, 10, 11, 13};
    ASSERT_EQ(s.formals.size(), 10u);
    for (size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(s.formals[i].type, expected[i]) << i;
        EXPECT_FALSE(s.formals[i].by_reference);
    }
    EXPECT_EQ(s.required, 10u);
    EXPECT_FALSE(s.variadic);
    EXPECT_TRUE(parse_function_signature("").formals.empty());
}

TEST(SignatureParser, EveryModifier) {
    function_signature_st s = parse_function_signature("C?.@*A$|I?+");
    ASSERT_EQ(s.formals.size(), 4u);
    EXPECT_EQ(s.formals[0].type, FORMAL_STRING | FORMAL_NULLABLE);
    EXPECT_TRUE(s.formals[1].by_reference);
    EXPECT_TRUE(s.formals[1].may_create);
    EXPECT_FALSE(s.formals[1].reference_if_possible);
    EXPECT_TRUE(s.formals[2].reference_if_possible);
    EXPECT_FALSE(s.formals[2].by_reference);
    EXPECT_EQ(s.required, 3u);
    EXPECT_TRUE(s.variadic);
    EXPECT_EQ(s.variadic_formal.type, FORMAL_INTEGER | FORMAL_NULLABLE);
}

TEST(SignatureParser, OptionalMarkAndVariadicFormal) {
    function_signature_st echo = parse_function_signature("|.?+");
    EXPECT_EQ(echo.required, 0u);
    EXPECT_TRUE(echo.variadic);
    EXPECT_EQ(echo.variadic_formal.type, FORMAL_NULLABLE);
    function_signature_st concat = parse_function_signature("C?+");
    EXPECT_EQ(concat.required, 1u);
    EXPECT_EQ(concat.variadic_formal.type, FORMAL_STRING | FORMAL_NULLABLE);
    function_signature_st alines = parse_function_signature(".@C|IC+");
    EXPECT_EQ(alines.required, 2u);
    EXPECT_EQ(alines.variadic_formal.type, FORMAL_STRING);
}

TEST(SignatureParser, UnknownByteIsAnInternalError) {
    EXPECT_THROW(parse_function_signature("CX"), assert_failed_exception);
    EXPECT_THROW(parse_function_signature("?C"), assert_failed_exception);
    EXPECT_THROW(parse_function_signature("c"), assert_failed_exception);
    static const library_function_row_st bad[] = {
        {"bad", "C!", function_not_available<"bad">, "L", 0},
        {nullptr, nullptr, nullptr, nullptr, 0},
    };
    static const module_description_st description = {nullptr, nullptr, bad, nullptr,
                                                      nullptr, nullptr, nullptr};
    Library library;
    EXPECT_THROW(load_library_tables(&library, &description), assert_failed_exception);
}

TEST(OptionLanguage, UseOptions) {
    const command_options_row_st* row = find_command_options(113);
    ASSERT_NE(row, nullptr);
    basic_command_st use = parse_basic_command(*row);
    EXPECT_EQ(use.id, 113);
    EXPECT_EQ(use.name.u8str(), "use");
    ASSERT_EQ(use.items.size(), 5u);
    EXPECT_EQ(use.items[0].kind, OPTION_FLAGS);
    EXPECT_EQ(use.items[0].flags.size(), 7u);
    EXPECT_EQ(use.items[0].flags.at(String("exclusive")), 4u);
    EXPECT_EQ(use.items[0].flags.at(String("SHARED")), 5u);
    EXPECT_EQ(use.items[0].flags.at(String("online")), 0u);
    EXPECT_EQ(use.items[1].kind, OPTION_NAMED);
    EXPECT_EQ(use.items[1].name.u8str(), "filename");
    EXPECT_EQ(use.items[4].name.u8str(), "engine");
    for (const option_item_st& item : use.items) EXPECT_TRUE(item.optional);
}

TEST(OptionLanguage, ListsGroupsAndEmptyLists) {
    std::vector<option_item_st> items = parse_command_options("filename,in,retval,with+");
    ASSERT_EQ(items.size(), 4u);
    EXPECT_EQ(items[3].kind, OPTION_LIST);
    EXPECT_EQ(items[3].name.u8str(), "with");
    items = parse_command_options("tag,in,(ascending,descending)");
    ASSERT_EQ(items.size(), 3u);
    EXPECT_EQ(items[2].kind, OPTION_FLAGS);
    EXPECT_EQ(items[2].flags.at(String("descending")), 1u);
    EXPECT_TRUE(parse_command_options("").empty());
    EXPECT_THROW(parse_command_options("(a,b"), assert_failed_exception);
    EXPECT_THROW(parse_command_options("a,,b"), assert_failed_exception);
    EXPECT_THROW(parse_command_options("a;b"), assert_failed_exception);
}

TEST(OptionLanguage, EveryCoreListParsesAndNamesACommand) {
    size_t rows = 0;
    for (const command_options_row_st* row = core_command_options; row->name; ++row, ++rows) {
        EXPECT_NO_THROW(parse_command_options(row->options)) << row->name;
        EXPECT_NE(core_library().find_command(String(row->name)), nullptr) << row->name;
    }
    EXPECT_EQ(rows, 66u);
    EXPECT_EQ(find_command_options(0), nullptr);
    EXPECT_EQ(find_command_options(89)->name, std::string("set"));
}

TEST(SystemVariables, PlatformFlagsAnswerForThisPlatform) {
    VmStack stack(nullptr, 16, 4);
    auto read = [&](const char* name) {
        Variant v;
        core_library().find_variable_reader(String(name))->handler(&stack, 0, &v);
        return v.tag;
    };
    EXPECT_EQ(read("_UNIX"), TAG_TRUE);
    EXPECT_EQ(read("_unix"), TAG_TRUE);
    EXPECT_EQ(read("_WINDOWS"), TAG_FALSE);
    EXPECT_EQ(read("_DOS"), TAG_FALSE);
    EXPECT_EQ(read("_MAC"), TAG_FALSE);
}

TEST(SystemVariables, OtherNamesFailAtRunTime) {
    EXPECT_EQ(error_text_of_call(core_library().find_variable_reader(String("_TALLY"))->handler),
              "1001 Feature 'Read system variable' is not available.");
    VmStack stack(nullptr, 16, 4);
    for (const char* name : {"_WINDOWS", "_PAGENO"}) {
        try {
            core_library().find_variable_writer(String(name))->handler(&stack, 1);
            FAIL() << name;
        } catch (const RuntimeError& e) {
            EXPECT_EQ(e.message.u8str(), "Feature 'Write to system variable' is not available.");
        }
    }
    const library_func_def_st* reader = core_library().find_variable_reader(String("_pcopies"));
    ASSERT_NE(reader, nullptr);
    EXPECT_EQ(reader->result.formals[0].type, FORMAL_LOGICAL);
    EXPECT_EQ(core_library().find_variable_writer(String("_pcopies"))->parameters.required, 1u);
    EXPECT_EQ(core_library().find_variable_reader(String("_nonsense")), nullptr);
}

TEST(CompileHooks, SubstrLengths) {
    compile_hook_fn hook = core_library().find_compile_hook(String("SUBSTR"));
    ASSERT_NE(hook, nullptr);
    compiler_type_info_st args[3] = {{FORMAL_STRING, true, 10}, {FORMAL_INTEGER, true, 0},
                                     {FORMAL_INTEGER | FORMAL_NULLABLE, false, 0}};
    Variant values[3];
    values[1].set_integer(3LL);
    compiler_type_info_st result;
    hook(2, args, values, &result);
    EXPECT_TRUE(result.is_constant);
    EXPECT_EQ(result.length, 7u);  // one short of the remainder, as intended
    EXPECT_EQ(result.type, FORMAL_STRING);
    compiler_type_info_st three;
    hook(3, args, values, &three);
    EXPECT_FALSE(three.is_constant);
    EXPECT_EQ(three.length, 10u);
    EXPECT_EQ(three.type, FORMAL_STRING | FORMAL_NULLABLE);
}

TEST(CompileHooks, LeftAndTrim) {
    compile_hook_fn left = core_library().find_compile_hook(String("left"));
    compiler_type_info_st args[2] = {{FORMAL_STRING | FORMAL_NULLABLE, false, 20},
                                     {FORMAL_INTEGER, true, 0}};
    Variant values[2];
    values[1].set_integer(4LL);
    compiler_type_info_st result;
    left(2, args, values, &result);
    EXPECT_EQ(result.length, 4u);
    EXPECT_FALSE(result.is_constant);
    EXPECT_EQ(result.type, FORMAL_STRING | FORMAL_NULLABLE);

    compile_hook_fn trim = core_library().find_compile_hook(String("alltrim"));
    compiler_type_info_st trim_args[2] = {{FORMAL_STRING, true, 5}, {FORMAL_STRING, false, 9}};
    compiler_type_info_st trimmed;
    trim(2, trim_args, values, &trimmed);
    EXPECT_TRUE(trimmed.is_constant);  // only argument 1 counts
    EXPECT_EQ(trimmed.length, 5u);
    EXPECT_EQ(core_library().find_compile_hook(String("allt")), nullptr);
}
