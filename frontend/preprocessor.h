#pragma once
// The line loop between tokenize and the parser: removes comments, joins
// continued lines, applies # directives and #define replacement, notes &name
// macros, and hands each logical line to the parser with its start token.
#include <cstdint>
#include <filesystem>
#include <unordered_map>
#include <vector>

#include "frontend/token.h"
#include "values/string.h"

namespace zobase {

// What the parse of one logical line tells the line loop.
struct line_parse_result_st {
    int32_t error;                        // 0, or the parser's error number
    document_location_st error_location;  // the first offending token
    int32_t statement_type;               // of the finished statement, -1 for none
};

// The loop's caller: the parser of one line and, optionally, the receiver of
// classification marks (class 5 for directive tokens).
struct preprocessor_client_st {
    void* context;
    void (*parse_line)(void* context, ParserToken start, const token_st* begin, const token_st* end,
                       line_parse_result_st& result);
    void (*classify)(void* context, uint32_t mark_class, const document_location_st& location);
};

enum DiagnosticCategory : int32_t { DIAGNOSTIC_PREPROCESSOR = 0, DIAGNOSTIC_PARSER = 1 };

struct preprocessor_error_st {
    int32_t category;
    int32_t number;
    document_location_st location;
    String file;  // the text the location refers to; empty for the main text
};

// A span of text in its own charset, used as a case-insensitive key.
struct text_key_st {
    const char* begin;
    const char* end;
    const Charset* charset;
};

struct TextKeyHash {
    size_t operator()(const text_key_st& key) const;
};
struct TextKeyEqual {
    bool operator()(const text_key_st& a, const text_key_st& b) const;
};

class Preprocessor {
public:
    std::vector<token_st> comments;        // comment tokens, moved here for classification
    std::vector<token_st> replaced_words;  // words that #define replaced
    std::vector<preprocessor_error_st> errors;
    std::vector<std::filesystem::path> include_path;  // searched after the includer's folder
    bool no_replacement = false;

    explicit Preprocessor(const preprocessor_client_st& client);
    Preprocessor(const Preprocessor&) = delete;
    Preprocessor& operator=(const Preprocessor&) = delete;

    // Walks a whole text; `file_name` is empty for a command line. Returns 0,
    // or the negative error number of a directive that failed.
    int run(const String& text, const String& file_name);

    // A #define made by the host; the replacement is tokenised from `body`.
    void define(const String& name, const String& body);
    bool is_defined(const char* begin, const char* end, const Charset* charset) const;

    struct frame_st;
    struct condition_st;
    typedef int (*directive_handler)(Preprocessor& self, frame_st& frame);

private:
    typedef std::unordered_map<text_key_st, token_vector, TextKeyHash, TextKeyEqual> define_map;

    preprocessor_client_st client_;
    define_map defines_;
    std::vector<String> owned_texts_;  // included files and made-up lexemes
    bool text_mode_ = false;
    int include_depth_ = 0;
    size_t directive_hash_ = 0;                 // the '#' of the directive being run
    document_location_st directive_location_{};  // '#' and its word

    int walk(frame_st& frame);
    int walk_line(frame_st& frame, token_vector& line);
    int run_directive(frame_st& frame);
    void skip_inactive_line(frame_st& frame);
    void take_physical_line(frame_st& frame, token_vector& line, bool replace);
    bool read_logical_line(frame_st& frame, token_vector& line, bool replace, bool keep_line_end);
    bool continuation_after(const frame_st& frame, size_t semicolon, size_t& resume);
    void take_comment(frame_st& frame);
    void add_replaced(const frame_st& frame, token_vector& line, const token_st& token);
    bool add_predefined(const frame_st& frame, token_vector& line, const token_st& word);
    void add_made_up(token_vector& line, const String& text, const document_location_st& location);
    void parse(frame_st& frame, ParserToken start, const token_vector& line);
    void record(int32_t category, int32_t number, const document_location_st& location,
                const frame_st& frame);

    static int directive_shebang(Preprocessor& self, frame_st& frame);
    static int directive_define(Preprocessor& self, frame_st& frame);
    static int directive_else(Preprocessor& self, frame_st& frame);
    static int directive_endif(Preprocessor& self, frame_st& frame);
    static int directive_error(Preprocessor& self, frame_st& frame);
    static int directive_if(Preprocessor& self, frame_st& frame);
    static int directive_ifdef(Preprocessor& self, frame_st& frame);
    static int directive_ifndef(Preprocessor& self, frame_st& frame);
    static int directive_include(Preprocessor& self, frame_st& frame);
    static int directive_undef(Preprocessor& self, frame_st& frame);
    static directive_handler find_directive(const token_st& word);

    int push_condition(frame_st& frame, bool taking);
    bool evaluate_condition(frame_st& frame);
    void replace_outside_defined(const frame_st& frame, const token_vector& raw, token_vector& rest);
    std::filesystem::path find_include(const frame_st& frame, const std::filesystem::path& name) const;
    int include_file(frame_st& frame, const std::filesystem::path& path,
                     const document_location_st& location);
};

}  // namespace zobase
