// Parses generated lines of mixed statements and prints lines per second.
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "frontend/parser.h"
#include "frontend/scanner.h"

using namespace zobase;

namespace {

const char* const templates[] = {
    "x%d = a.b[%d] + foo(1, 'text', .T.) * 2",
    "IF x%d > %d .AND. NOT y",
    "ENDIF",
    "? 'value', x%d, %d.5",
    "DO WHILE i%d < %d",
    "ENDDO",
    "USE customers%d IN %d SHARED",
    "REPLACE name WITH 'n%d' IN %d",
    "LOCAL a%d, b[%d]",
    "FOR i = 1 TO %d STEP %d",
    "NEXT",
    "SEEK 'k%d' IN %d",
};

void count_statement(int kind, void* value, const document_location_st&, void* context) {
    if (kind == PARSE_STATEMENT) {
        delete static_cast<Statement*>(value);
        ++*static_cast<size_t*>(context);
    }
}

}  // namespace

int main() {
    std::string source;
    const size_t line_count = 120000;
    char line[256];
    for (size_t i = 0; i < line_count; ++i) {
        const char* t = templates[i % (sizeof(templates) / sizeof(templates[0]))];
        std::snprintf(line, sizeof(line), t, static_cast<int>(i), static_cast<int>(i % 97));
        source += line;
        source += '\n';
    }
    String text(source.c_str());
    token_vector tokens;
    tokenize(text, tokens);

    size_t parsed = 0;
    std::vector<parse_error_st> errors;
    parse_options_st options;
    options.callback = count_statement;
    options.callback_context = &parsed;
    auto started = std::chrono::steady_clock::now();
    const token_st* begin = tokens.data();
    const token_st* end = begin + tokens.size();
    while (begin != end) {
        const token_st* stop = begin;
        while (stop != end && stop->type != TOKEN_LINE_END) ++stop;
        if (stop != end) ++stop;
        parse_tokens(begin, stop, static_cast<int>(ParserToken::start_statement), options, errors);
        begin = stop;
    }
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count();
    std::printf("lines: %zu, statements: %zu, errors: %zu\n", line_count, parsed, errors.size());
    std::printf("seconds: %.3f, lines per second: %.0f\n", seconds, line_count / seconds);
    return 0;
}
