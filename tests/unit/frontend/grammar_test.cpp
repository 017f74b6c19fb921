#include <gtest/gtest.h>

#include <memory>
#include <random>
#include <string>
#include <vector>

#include "frontend/parser.h"
#include "frontend/scanner.h"
#include "frontend/syntax_tree.h"
#include "values/error.h"

using namespace zobase;

namespace {

struct parsed_st {
    std::unique_ptr<Statement> statement;
    std::vector<parse_error_st> errors;
};

parsed_st parse(const char* line, int start = static_cast<int>(ParserToken::start_statement)) {
    parsed_st result;
    result.statement.reset(parse_statement_text(line, result.errors, start));
    return result;
}

std::string text(const String& s) { return s.u8str(); }

template <class T>
T* as(const parsed_st& p) {
    return dynamic_cast<T*>(p.statement.get());
}

const Option* option(const parsed_st& p, const char* key) {
    auto* command = as<BasicCommand>(p);
    return command ? command->options.find(key) : nullptr;
}

}  // namespace

// Every statement row of the grammar parses to the expected type.
TEST(GrammarCorpus, EveryStatementRowParses) {
    const struct {
        const char* line;
        StatementTypes type;
    } corpus[] = {
        {"ELSE", STMT_ELSE}, {"ENDDO", STMT_ENDDO}, {"ENDFOR", STMT_ENDFOR}, {"ENDIF", STMT_ENDIF},
        {"ENDSCAN", STMT_ENDSCAN}, {"EXIT", STMT_EXIT}, {"LOOP", STMT_LOOP}, {"NEXT", STMT_ENDFOR},
        {"NOTE this is a comment", STMT_DUMMY}, {"QUIT", STMT_QUIT}, {"= foo()", STMT_ASSIGN},
        {"?", STMT_ECHO}, {"? 1, 2", STMT_ECHO}, {"??", STMT_ECHO}, {"?? 'a'", STMT_ECHO},
        {"\\", STMT_TEXTMERGE}, {"\\\\", STMT_TEXTMERGE}, {"\\hello <<x>>", STMT_TEXTMERGE},
        {"\\\\hello", STMT_TEXTMERGE}, {"ALTER TABLE t ADD COLUMN c C(10)", STMT_ADD_COLUMN},
        {"ALTER TABLE t DROP COLUMN c", STMT_DROP_COLUMN}, {"APPEND BLANK", STMT_APPEND},
        {"ASSERT x > 1", STMT_ASSERT}, {"BEGIN TRANSACTION", STMT_BEGIN_TRANSACTION}, {"BROWSE", STMT_BROWSE},
        {"CANCEL", STMT_CANCEL}, {"DEFINE CLASS foo AS Custom", STMT_DEFINE_CLASS},
        {"DELETE TAG name", STMT_DELETE_TAG}, {"DELETE TAG ALL", STMT_DELETE_ALL_TAGS},
        {"END TRANSACTION", STMT_END_TRANSACTION}, {"ENDDEFINE", STMT_ENDDEFINE}, {"ENDFUNC", STMT_ENDFUNC},
        {"ENDPROC", STMT_ENDFUNC}, {"ENDWITH", STMT_ENDWITH}, {"ERROR 1, 'msg'", STMT_ERROR}, {"ERROR 5", STMT_ERROR},
        {"FOR i = 1 TO 10 STEP 2", STMT_FOR}, {"FOR EACH x IN coll", STMT_FOR_EACH},
        {"FOR EACH KEY k VALUE v IN coll", STMT_FOR_EACH}, {"FUNCTION foo", STMT_FUNCTION},
        {"PROCEDURE foo()", STMT_FUNCTION}, {"FUNCTION foo(a, b AS Integer) AS String", STMT_FUNCTION},
        {"LPARAMETERS a, b", STMT_LPARAMETERS}, {"x = 1", STMT_ASSIGN}, {"MODIFY COMMAND foo", STMT_MODIFY_COMMAND},
        {"PARAMETERS a", STMT_PARAMETERS}, {"ROLLBACK", STMT_ROLLBACK}, {"TEXT\n", STMT_TEXT},
        {"TEXT TO x NOSHOW\n", STMT_TEXT}, {"IF x", STMT_IF}, {"IF x THEN", STMT_IF}, {"LOCAL a, b", STMT_LOCAL},
        {"LOCAL ARRAY a[3]", STMT_LOCAL}, {"RETURN", STMT_RETURN}, {"RETURN 1", STMT_RETURN},
        {"RETURN @foo()", STMT_RETURN}, {"RETURN @a.b", STMT_RETURN}, {"WITH obj", STMT_WITH},
        {"PUBLIC a", STMT_PUBLIC}, {"PRIVATE a", STMT_PRIVATE}, {"PRIVATE ALL", STMT_PRIVATE_PATTERN},
        {"PRIVATE ALL EXCEPT a*", STMT_PRIVATE_PATTERN}, {"PRIVATE ALL LIKE a*", STMT_PRIVATE_PATTERN},
        {"HIDDEN a", STMT_HIDDEN}, {"PROTECTED a", STMT_PROTECTED}, {"DIMENSION a(3)", STMT_DIMENSION},
        {"SUSPEND", STMT_SUSPEND}, {"SET ASSERTS ON", STMT_SET}, {"SET DELETED OFF", STMT_SET},
        {"SET DECIMALS TO 4", STMT_SET}, {"SET BLOCKSIZE TO 64", STMT_SET}, {"SET FILTER TO", STMT_SET_FILTER_TO},
        {"SET FILTER TO x > 1", STMT_SET_FILTER_TO}, {"SET STEP ON", STMT_SET}, {"SET EXACT ON", STMT_SET},
        {"SET EXCLUSIVE OFF", STMT_SET}, {"SET NEAR ON", STMT_SET}, {"SET SPACE ON", STMT_SET},
        {"SET TEXTMERGE ON", STMT_SET_TEXTMERGE_TO}, {"SET DATASESSION TO", STMT_SET_DATASESSION_TO},
        {"SET DATASESSION TO 2", STMT_SET_DATASESSION_TO}, {"USE t SHARED", STMT_USE}, {"USE t", STMT_USE},
        {"USE IN 2", STMT_USE}, {"USE", STMT_USE}, {"SELECT abc", STMT_SELECT},
        {"DECLARE INTEGER Beep IN kernel32 INTEGER, INTEGER", STMT_DECLARE}, {"SKIP", STMT_SKIP},
        {"SKIP 2", STMT_SKIP}, {"GO TOP", STMT_GO_TOP}, {"GO BOTTOM", STMT_GO_BOTTOM}, {"GOTO 5", STMT_GO_RECORD},
        {"CREATE CURSOR c (a I, b C(10))", STMT_CREATE_TABLE},
        {"CREATE TABLE t CODEPAGE = 1252 (a N(10, 2) NOT NULL)", STMT_CREATE_TABLE}, {"PACK", STMT_PACK},
        {"ZAP", STMT_ZAP}, {"REPLACE f WITH 1", STMT_REPLACE}, {"REPLACE f WITH 1 IN t", STMT_REPLACE},
        {"SCATTER TO a", STMT_SCATTER_TO}, {"SCATTER MEMVAR", STMT_SCATTER_MEMVAR},
        {"SCATTER NAME o ADDITIVE", STMT_SCATTER_NAME}, {"GATHER FROM a", STMT_GATHER_FROM},
        {"GATHER MEMVAR", STMT_GATHER_MEMVAR}, {"GATHER NAME o", STMT_GATHER_NAME}, {"DO WHILE x < 3", STMT_DO_WHILE},
        {"DO CASE", STMT_DO_CASE}, {"DO foo", STMT_DO}, {"DO foo WITH 1, @b", STMT_DO},
        {"DROP TABLE t", STMT_DROP_TABLE}, {"RENAME TABLE a TO b", STMT_RENAME_TABLE}, {"CASE x = 1", STMT_CASE},
        {"OTHERWISE", STMT_OTHERWISE}, {"ENDCASE", STMT_ENDCASE}, {"TRY", STMT_TRY}, {"CATCH", STMT_CATCH},
        {"CATCH TO e", STMT_CATCH}, {"CATCH TO e WHEN e.code = 1", STMT_CATCH}, {"THROW 'x'", STMT_THROW},
        {"FINALLY", STMT_FINALLY}, {"ENDTRY", STMT_ENDTRY}, {"SET LIBRARY TO a, b", STMT_SET_LIBRARY_TO},
        {"SET LIBRARY TO a ADDITIVE", STMT_SET_LIBRARY_TO}, {"SET LIBRARY TO", STMT_SET_LIBRARY_TO},
        {"SET PATH TO a", STMT_SET_PATH_TO}, {"SET PATH TO a ADDITIVE", STMT_SET_PATH_TO},
        {"SET PATH TO", STMT_SET_PATH_TO}, {"SET PROCEDURE TO p", STMT_SET_PROCEDURE_TO},
        {"SET PROCEDURE TO p ADDITIVE", STMT_SET_PROCEDURE_TO}, {"SET PROCEDURE TO", STMT_SET_PROCEDURE_TO},
        {"SET FDOW TO 2", STMT_SET_FDOW_TO}, {"SET POINT TO ','", STMT_SET_POINT_TO},
        {"SET SEPARATOR TO '.'", STMT_SET_SEPARATOR_TO}, {"SET HOURS TO 24", STMT_SET_HOURS_TO},
        {"SET DATE TO ansi", STMT_SET_DATE_TO}, {"SET DATE german", STMT_SET_DATE_TO},
        {"SET SYSFORMATS ON", STMT_SET_SYSFORMATS_TO}, {"SET SECONDS OFF", STMT_SET_SECONDS_TO},
        {"SET CENTURY ON", STMT_SET_CENTURY_TO}, {"STORE 1 TO a, b", STMT_STORE}, {"EXTERNAL ARRAY a", STMT_DUMMY},
        {"INDEX ON name TAG name", STMT_INDEX}, {"LOCATE FOR x = 1", STMT_LOCATE}, {"CONTINUE", STMT_CONTINUE},
        {"SCAN", STMT_SCAN}, {"SCAN FOR x > 1", STMT_SCAN}, {"DELETE", STMT_DELETE_RECORD},
        {"RECALL", STMT_RECALL_RECORD}, {"DELETE FILE (x)", STMT_DELETE_FILE}, {"DELETE FILE a.txt", STMT_DELETE_FILE},
        {"RUN ls -l", STMT_RUN}, {"UNLOCK", STMT_UNLOCK}, {"UNLOCK ALL", STMT_UNLOCK}, {"! ls", STMT_RUN},
        {"CLEAR", STMT_CLEAR}, {"CLS", STMT_CLEAR}, {"CD /tmp", STMT_CD}, {"COPY TO x", STMT_COPY_TO},
        {"COPY TO x WITH CDX", STMT_COPY_TO}, {"REINDEX", STMT_REINDEX}, {"SET ORDER TO", STMT_SET_ORDER_TO},
        {"SET ORDER TO name", STMT_SET_ORDER_TO}, {"SET ORDER TO name DESCENDING", STMT_SET_ORDER_TO},
        {"SET ORDER TO TAG name", STMT_SET_ORDER_TO}, {"SEEK 'x'", STMT_SEEK}, {"SEEK 'x' IN t", STMT_SEEK},
        {"SET KEY TO", STMT_SET_KEY_TO}, {"SET KEY TO 'a' IN t", STMT_SET_KEY_TO},
        {"SET KEY TO range - 1", STMT_SET_KEY_TO}, {"SET KEY TO RANGE 1, 2 IN t", STMT_SET_KEY_TO},
        {"SET KEY TO range 'a',", STMT_SET_KEY_TO}, {"SET KEY TO RANGE , 2", STMT_SET_KEY_TO},
        {"DISPLAY STRUCTURE", STMT_DISPLAY_STRUCTURE}, {"IMPORTS lib.prg", STMT_IMPORT}, {"MKDIR abc", STMT_MKDIR},
        {"WAIT", STMT_WAIT}, {"#PRAGMA foo(1)", STMT_PRAGMA}, {"foo()", STMT_ASSIGN}, {"a.b.c()", STMT_ASSIGN},
    };
    for (const auto& row : corpus) {
        auto p = parse(row.line);
        ASSERT_TRUE(p.errors.empty()) << row.line << " error " << p.errors[0].number;
        ASSERT_NE(p.statement, nullptr) << row.line;
        EXPECT_EQ(p.statement->type, row.type) << row.line;
    }
}

TEST(GrammarKeywords, KeywordsAreNames) {
    auto assign = parse("if = 1");
    ASSERT_NE(as<Stmt_Assign>(assign), nullptr);
    auto* target = dynamic_cast<Operand_Variable*>(as<Stmt_Assign>(assign)->target.get());
    ASSERT_NE(target, nullptr);
    EXPECT_EQ(text(target->name), "if");

    auto condition = parse("if x");
    ASSERT_NE(as<Stmt_Condition>(condition), nullptr);
    EXPECT_EQ(condition.statement->type, STMT_IF);

    auto field = parse("for.next = date");
    ASSERT_NE(as<Stmt_Assign>(field), nullptr);
    EXPECT_EQ(as<Stmt_Assign>(field)->target->kind, OPERAND_PATH);
}

TEST(GrammarClosing, TrailingTextIsIgnored) {
    for (const char* line : {"ENDIF anything at all", "ELSE x y z", "ENDDO (", "ENDFOR i", "ENDSCAN ;", "EXIT now",
                             "LOOP again", "NEXT i", "QUIT 'x"}) {
        auto p = parse(line);
        EXPECT_TRUE(p.errors.empty()) << line;
        EXPECT_NE(p.statement, nullptr) << line;
    }
    EXPECT_EQ(parse("ENDIF = 1").statement->type, STMT_ASSIGN);
}

TEST(GrammarPriorities, DoWhileAgainstDoFile) {
    EXPECT_EQ(parse("DO WHILE .T.").statement->type, STMT_DO_WHILE);
    EXPECT_EQ(parse("DO CASE").statement->type, STMT_DO_CASE);
    auto file = parse("DO case.prg");  // a keyword as a file name
    ASSERT_EQ(file.statement->type, STMT_DO);
    auto* name = dynamic_cast<const Operand_Name*>(option(file, "FILENAME")->value.get());
    ASSERT_NE(name, nullptr);
    EXPECT_EQ(text(name->name), "case.prg");
}

TEST(GrammarPriorities, UseDottedNameIsText) {
    auto p = parse("USE a.b");
    ASSERT_EQ(p.statement->type, STMT_USE);
    const Option* file = option(p, "FILENAME");
    ASSERT_NE(file, nullptr);
    ASSERT_EQ(file->value->kind, OPERAND_NAME);
    EXPECT_EQ(text(static_cast<Operand_Name*>(file->value.get())->name), "a.b");
    EXPECT_EQ(parse("USE (a.b)").statement->type, STMT_USE);
    EXPECT_EQ(option(parse("USE (a.b)"), "FILENAME")->value->kind, OPERAND_PATH);
    EXPECT_EQ(parse("USEx").statement, nullptr);
    EXPECT_NE(option(parse("USE IN 2"), "IN"), nullptr);
}

// RANGE is no keyword: after SET KEY TO a word and bounds are a range, an
// expression that begins with a variable of that name stays an expression.
TEST(GrammarPriorities, KeyRangeAgainstExpression) {
    auto range = parse("SET KEY TO RANGE 'a', 'b'");
    EXPECT_NE(option(range, "LOW"), nullptr);
    EXPECT_NE(option(range, "HIGH"), nullptr);
    EXPECT_EQ(option(range, "TO"), nullptr);
    auto high = parse("set key to range , 5");
    EXPECT_EQ(option(high, "LOW"), nullptr);
    EXPECT_NE(option(high, "HIGH"), nullptr);
    auto expression = parse("SET KEY TO range - 1");
    EXPECT_NE(option(expression, "TO"), nullptr);
    EXPECT_EQ(option(expression, "LOW"), nullptr);
    EXPECT_FALSE(parse("SET KEY TO other 1, 2").errors.empty());
}

TEST(GrammarPriorities, SelectNameAgainstExpression) {
    EXPECT_EQ(option(parse("SELECT abc"), "ALIAS")->value->kind, OPERAND_NAME);
    EXPECT_EQ(option(parse("SELECT (abc)"), "ALIAS")->value->kind, OPERAND_VARIABLE);
    EXPECT_EQ(parse("DELETE TAG ALL").statement->type, STMT_DELETE_ALL_TAGS);
    EXPECT_EQ(option(parse("DELETE FILE (x)"), "FILENAME")->value->kind, OPERAND_VARIABLE);
    EXPECT_EQ(option(parse("DELETE FILE x"), "FILENAME")->value->kind, OPERAND_CONST);
}

TEST(GrammarExpressions, PrefixMinusBindsTighterThanPower) {
    std::vector<parse_error_st> errors;
    std::unique_ptr<Operand> e(parse_expression_text("-2 ** 2", errors));
    ASSERT_TRUE(errors.empty());
    auto* power = dynamic_cast<BinaryOperator*>(e.get());
    ASSERT_NE(power, nullptr);
    EXPECT_EQ(power->op, BINARY_POW);
    auto* left = dynamic_cast<Const_Value*>(power->left.get());
    ASSERT_NE(left, nullptr);
    EXPECT_EQ(left->value.integer, -2);

    std::unique_ptr<Operand> unary(parse_expression_text("- x ^ 2", errors));
    ASSERT_EQ(unary->kind, OPERAND_BINARY);
    EXPECT_EQ(static_cast<BinaryOperator*>(unary.get())->left->kind, OPERAND_UNARY);
}

TEST(GrammarExpressions, LeftAssociativeLevels) {
    std::vector<parse_error_st> errors;
    std::unique_ptr<Operand> e(parse_expression_text("1 - 2 - 3 * 4 .AND. a $ b OR NOT c <= d", errors));
    ASSERT_TRUE(errors.empty());
    auto* top = static_cast<BinaryOperator*>(e.get());
    ASSERT_EQ(top->op, BINARY_OR);
    auto* conj = static_cast<BinaryOperator*>(top->left.get());
    ASSERT_EQ(conj->op, BINARY_AND);
    auto* sub = static_cast<BinaryOperator*>(conj->left.get());
    ASSERT_EQ(sub->op, BINARY_SUB);
    EXPECT_EQ(static_cast<BinaryOperator*>(sub->left.get())->op, BINARY_SUB);
    EXPECT_EQ(static_cast<BinaryOperator*>(sub->right.get())->op, BINARY_MUL);
    EXPECT_EQ(static_cast<BinaryOperator*>(conj->right.get())->op, BINARY_IN_STR);
    EXPECT_EQ(top->right->kind, OPERAND_UNARY);
    for (auto [source, op] : {std::pair{"a == b", BINARY_EQEQ}, {"a != b", BINARY_LTGT}, {"a # b", BINARY_LTGT},
                              {"a =< b", BINARY_LTEQ}, {"a => b", BINARY_GTEQ}, {"a <> b", BINARY_LTGT}}) {
        std::unique_ptr<Operand> r(parse_expression_text(source, errors));
        ASSERT_NE(r, nullptr) << source;
        EXPECT_EQ(static_cast<BinaryOperator*>(r.get())->op, op) << source;
    }
}

TEST(GrammarLiterals, Forms) {
    std::vector<parse_error_st> errors;
    auto constant = [&](const char* source) {
        std::unique_ptr<Operand> e(parse_expression_text(source, errors));
        auto* c = dynamic_cast<Const_Value*>(e.get());
        Variant v;
        if (c) c->value.copy(&v);
        return v;
    };
    EXPECT_EQ(constant("007").integer, 7);
    EXPECT_EQ(constant("0x1F").integer, 31);
    EXPECT_DOUBLE_EQ(constant("1.25").numeric.value, 1.25);
    EXPECT_EQ(constant("1.25").numeric.decimals, 2u);
    EXPECT_DOUBLE_EQ(constant(".5").numeric.value, 0.5);
    EXPECT_EQ(constant("$12.5").tag, TAG_MONEY);
    EXPECT_EQ(constant(".T.").tag, TAG_TRUE);
    EXPECT_EQ(constant("FALSE").tag, TAG_FALSE);
    EXPECT_EQ(constant(".NULL.").tag, TAG_NULL);
    EXPECT_EQ(constant("{}").tag, TAG_DATE);
    EXPECT_EQ(constant("{^2024-02-29}").tag, TAG_DATE);
    EXPECT_NE(constant("{^2024-02-29}").date.julian, 0u);
    EXPECT_EQ(constant("{^2024-02-29 10:20:30}").tag, TAG_DATETIME);
    EXPECT_EQ(constant("{--::}").tag, TAG_DATETIME);
    Variant s = constant("[it's \"x\"]");
    ASSERT_EQ(s.tag, TAG_STRING);
    EXPECT_EQ(text(s.str()), "it's \"x\"");
    s.release(nullptr);
    Variant b = constant("0h0102");
    ASSERT_EQ(b.tag, TAG_STRING);
    EXPECT_EQ(b.str().size(), 2u);
    b.release(nullptr);
    ASSERT_TRUE(errors.empty());
    constant("9223372036854775808");
    ASSERT_EQ(errors.size(), 1u);  // a bad literal is recorded, the parse goes on
    EXPECT_EQ(errors[0].number, 10);
}

TEST(GrammarLines, MacroAndTextLines) {
    auto macro = parse("x = &name.y", static_cast<int>(ParserToken::start_macro));
    auto* m = as<Stmt_Macro>(macro);
    ASSERT_NE(m, nullptr);
    ASSERT_EQ(m->items.size(), 3u);
    EXPECT_EQ(m->items[0].kind, 'S');
    EXPECT_EQ(text(m->items[0].text), "x = ");
    EXPECT_EQ(m->items[1].kind, 'V');
    EXPECT_EQ(text(m->items[1].text), "name");
    auto cond = parse("IF &cond", static_cast<int>(ParserToken::start_macro));
    ASSERT_NE(as<Stmt_Condition>(cond), nullptr);
    EXPECT_EQ(cond.statement->type, STMT_IF);
    EXPECT_EQ(as<Stmt_Condition>(cond)->macro.size(), 2u);
    EXPECT_EQ(parse("DO WHILE &c", static_cast<int>(ParserToken::start_macro)).statement->type, STMT_DO_WHILE);
    EXPECT_EQ(parse("SCAN &c", static_cast<int>(ParserToken::start_macro)).statement->type, STMT_SCAN);

    const int start_text = static_cast<int>(ParserToken::start_text);
    auto line = parse("  some text; && here\n", start_text);
    ASSERT_NE(as<Stmt_Text>(line), nullptr);
    EXPECT_EQ(text(as<Stmt_Text>(line)->text), "  some text; && here");
    EXPECT_EQ(parse("\n", start_text).statement->type, STMT_TEXT_LINE);
    EXPECT_EQ(parse("ENDTEXT whatever\n", start_text).statement->type, STMT_ENDTEXT);
}

TEST(GrammarTree, PathsCallsAndOptions) {
    auto p = parse("a.b[1].c(2) = 3");
    auto* assign = as<Stmt_Assign>(p);
    ASSERT_NE(assign, nullptr);
    auto* path = dynamic_cast<Path*>(assign->target.get());
    ASSERT_NE(path, nullptr);
    EXPECT_EQ(path->root->kind, PATH_ITEM_NAME);
    ASSERT_EQ(path->items.size(), 2u);
    EXPECT_EQ(path->items[0]->kind, PATH_ITEM_NAME_INDEX);
    EXPECT_EQ(path->items[1]->kind, PATH_ITEM_FUNCTION);

    auto with = parse(".x = 1");
    EXPECT_EQ(dynamic_cast<Path*>(as<Stmt_Assign>(with)->target.get())->root->kind, PATH_ITEM_WITH);
    EXPECT_EQ(as<Stmt_Assign>(parse("a(1) = 1"))->target->kind, OPERAND_VARIABLE_INDEX);
    EXPECT_TRUE(dynamic_cast<Operand_Variable*>(as<Stmt_Assign>(parse("m.x = 1"))->target.get())->memvar_only);

    auto call = parse("? foo(1,,@x)");
    auto* echo = as<Stmt_Echo>(call);
    ASSERT_NE(echo, nullptr);
    auto* c = dynamic_cast<Operand_Call*>(echo->values->at(0));
    ASSERT_NE(c, nullptr);
    ASSERT_EQ(c->arguments->size(), 3u);
    EXPECT_EQ(c->arguments->at(1)->kind, OPERAND_CONST);
    EXPECT_EQ(c->arguments->at(2)->kind, OPERAND_REFERENCE);

    auto assert_line = parse("ASSERT x > 1");
    auto* exprtext = dynamic_cast<Const_Value*>(option(assert_line, "EXPRTEXT")->value.get());
    EXPECT_EQ(text(exprtext->value.str()), "x > 1");
}

TEST(GrammarErrors, RepeatedClauseAndLocations) {
    auto twice = parse("USE t SHARED SHARED");
    ASSERT_EQ(twice.errors.size(), 1u);
    EXPECT_EQ(twice.errors[0].number, 10);

    auto bad = parse("x = (1 +");
    ASSERT_FALSE(bad.errors.empty());
    EXPECT_EQ(bad.statement, nullptr);
    EXPECT_EQ(bad.errors[0].number, 10);
    EXPECT_EQ(bad.errors[0].location.start.line, 1u);

    auto second = parse("x = 1 2");
    ASSERT_FALSE(second.errors.empty());
    EXPECT_EQ(second.errors[0].location.start.column, 7u);  // the offending token
}

TEST(GrammarOperand, RetryModeLeavesTheRest) {
    String source("abc.def + 1 extra");
    token_vector tokens;
    tokenize(source, tokens);
    const token_st* used = nullptr;
    std::unique_ptr<Operand> o(parse_operand(tokens.data(), tokens.data() + tokens.size(), true, &used));
    ASSERT_NE(o, nullptr);
    EXPECT_EQ(o->kind, OPERAND_PATH);
    EXPECT_LT(used, tokens.data() + tokens.size());
    EXPECT_THROW(parse_operand(tokens.data(), tokens.data() + tokens.size(), false, nullptr), RuntimeError);
}

// Random token soup must only ever produce recorded errors.
TEST(GrammarRobustness, RandomTokenSoup) {
    const char* pieces[] = {"IF", " ", "x", "=", "(", ")", "[", "]", "'", "\"", ".", "&", "1", "DO", "WHILE",
                            ",", "@", "-", ">", "*", "{", "}", "^", "?", "\\", "USE", "a", "$", "0x", "0h1", ";"};
    std::mt19937 random(1234);
    for (int round = 0; round < 3000; ++round) {
        std::string line;
        int count = random() % 14;
        for (int i = 0; i < count; ++i) line += pieces[random() % (sizeof(pieces) / sizeof(pieces[0]))];
        for (int start = 259; start <= 263; ++start) {
            std::vector<parse_error_st> errors;
            std::unique_ptr<Statement> s(parse_statement_text(line.c_str(), errors, start));
            if (!s && start <= 261) {
                ASSERT_FALSE(errors.empty()) << line;
            }
            for (const auto& e : errors)
                ASSERT_TRUE(e.number == 10 || e.number == 9012 || e.number == 9013) << line;
        }
    }
}
