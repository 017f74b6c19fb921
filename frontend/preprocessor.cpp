#include "frontend/preprocessor.h"

#include <fstream>
#include <iterator>
#include <string>

#include "base/call_trace.h"
#include "frontend/preprocessor_expression.h"
#include "frontend/scanner.h"
#include "text/charset.h"
#include "text/collation.h"
#include "values/error.h"

namespace zobase {

namespace {

constexpr int32_t STATEMENT_TEXT = 108;
constexpr int32_t STATEMENT_ENDTEXT = 39;
constexpr int MAX_INCLUDE_DEPTH = 32;
constexpr size_t LINE_RESERVE = 256;

text_key_st key_of(const token_st& token) {
    return {token.value.begin, token.value.begin + token.value.size, token.value.charset};
}

bool is_blank(const token_st& token) { return token.type == TOKEN_BLANK; }

document_location_st span(const token_st& first, const token_st& last) {
    return {first.location.start, last.location.end};
}

}  // namespace

size_t TextKeyHash::operator()(const text_key_st& key) const {
    return Collation::unicode_machine_ci->hash(key.begin, key.end, key.charset);
}

bool TextKeyEqual::operator()(const text_key_st& a, const text_key_st& b) const {
    return Collation::unicode_machine_ci->compare(a.begin, a.end, a.charset, b.begin, b.end,
                                                  b.charset) == 0;
}

struct Preprocessor::condition_st {
    bool parent_active;
    bool taking;        // this branch is the one compiled
    bool branch_taken;  // some branch of this #if was taken already
    bool seen_else;
    document_location_st location;
};

// One text being walked: the main text or an included file.
struct Preprocessor::frame_st {
    token_vector tokens;
    size_t pos = 0;
    String file_name;
    std::vector<condition_st> conditions;

    bool at_end() const { return pos >= tokens.size(); }
    const token_st& current() const { return tokens[pos]; }
    bool has(size_t index, uint32_t type) const {
        return index < tokens.size() && tokens[index].type == type;
    }
    bool active() const {
        return conditions.empty() || (conditions.back().parent_active && conditions.back().taking);
    }
    void skip_blanks() {
        while (!at_end() && is_blank(current())) ++pos;
    }
};

Preprocessor::Preprocessor(const preprocessor_client_st& client) : client_(client) {}

int Preprocessor::run(const String& text, const String& file_name) {
    ZO_TRACE();
    frame_st frame;
    frame.file_name = file_name;
    tokenize(text, frame.tokens);
    return walk(frame);
}

void Preprocessor::define(const String& name, const String& body) {
    ZO_TRACE();
    owned_texts_.push_back(name);
    owned_texts_.push_back(body);
    const String& kept = owned_texts_[owned_texts_.size() - 2];
    token_vector replacement;
    tokenize(owned_texts_.back(), replacement);
    defines_[text_key_st{kept.read(), kept.end(), kept.get_charset()}] = std::move(replacement);
}

bool Preprocessor::is_defined(const char* begin, const char* end, const Charset* charset) const {
    return defines_.count(text_key_st{begin, end, charset}) != 0;
}

int Preprocessor::walk(frame_st& frame) {
    token_vector line;
    line.reserve(LINE_RESERVE);
    for (;;) {
        line.clear();
        if (text_mode_ && frame.active()) {
            if (frame.at_end()) break;
            take_physical_line(frame, line, true);
            parse(frame, ParserToken::start_text, line);
            continue;
        }
        frame.skip_blanks();
        if (frame.at_end()) break;
        int result = walk_line(frame, line);
        if (result < 0) return result;
    }
    if (!frame.conditions.empty()) {
        record(DIAGNOSTIC_PREPROCESSOR, ERR_IF_ELSE_ENDIF_MISSING, frame.conditions.back().location, frame);
        return -ERR_IF_ELSE_ENDIF_MISSING;
    }
    return 0;
}

// One line that starts at frame.pos, outside text mode and past its blanks.
int Preprocessor::walk_line(frame_st& frame, token_vector& line) {
    const token_st& first = frame.current();
    if (!frame.active()) {
        if (first.type == '#' && frame.has(frame.pos + 1, TOKEN_WORD)) {
            int result = run_directive(frame);
            if (result <= 0) return result;
        }
        skip_inactive_line(frame);
        return 0;
    }
    if (first.type == '\\') {
        take_physical_line(frame, line, true);
        parse(frame, ParserToken::start_statement, line);
        return 0;
    }
    if (first.type == '#' && frame.pos + 1 < frame.tokens.size()) {
        int result = run_directive(frame);
        if (result <= 0) return result;
    }
    if (frame.current().type == '*') {
        read_logical_line(frame, comments, false, false);
        return 0;
    }
    bool macro = read_logical_line(frame, line, true, true);
    if (line.empty() || (line.size() == 1 && line[0].type == TOKEN_LINE_END)) return 0;
    parse(frame, macro ? ParserToken::start_macro : ParserToken::start_statement, line);
    return 0;
}

// At a '#': runs the directive it names. A positive result, also for an
// unknown name, leaves the position at the '#' for the line to be read as usual.
int Preprocessor::run_directive(frame_st& frame) {
    size_t hash = frame.pos;
    directive_handler handler = find_directive(frame.tokens[hash + 1]);
    if (!handler) return 1;
    if (!frame.active() && handler != directive_if && handler != directive_ifdef &&
        handler != directive_ifndef && handler != directive_else && handler != directive_endif)
        return 1;
    directive_hash_ = hash;
    directive_location_ = span(frame.tokens[hash], frame.tokens[hash + 1]);
    frame.pos = hash + 2;
    frame.skip_blanks();
    if (client_.classify)
        for (size_t i = hash; i < frame.pos; ++i)
            if (!is_blank(frame.tokens[i])) client_.classify(client_.context, 5, frame.tokens[i].location);
    int result;
    try {
        result = handler(*this, frame);
    } catch (const DirectiveFailure& failure) {
        record(DIAGNOSTIC_PREPROCESSOR, failure.number, failure.location, frame);
        return -failure.number;
    }
    if (result > 0) frame.pos = hash;
    return result;
}

void Preprocessor::skip_inactive_line(frame_st& frame) {
    while (!frame.at_end() && frame.current().type != TOKEN_LINE_END) ++frame.pos;
    if (!frame.at_end()) ++frame.pos;
}

// Everything up to and with the line end, untouched by comment and continuation rules.
void Preprocessor::take_physical_line(frame_st& frame, token_vector& line, bool replace) {
    while (!frame.at_end()) {
        const token_st& token = frame.tokens[frame.pos++];
        if (token.type == TOKEN_LINE_END) {
            line.push_back(token);
            return;
        }
        if (replace) add_replaced(frame, line, token);
        else line.push_back(token);
    }
}

// Reads one logical line into `line`; true when it holds a &name macro.
bool Preprocessor::read_logical_line(frame_st& frame, token_vector& line, bool replace,
                                     bool keep_line_end) {
    enum { NONE, SINGLE, DOUBLE, BRACKET } open = NONE;
    bool macro = false;
    while (!frame.at_end()) {
        const token_st& token = frame.current();
        uint32_t type = token.type;
        if (type == TOKEN_LINE_END) {
            if (keep_line_end) line.push_back(token);
            ++frame.pos;
            return macro;
        }
        size_t resume;
        if (type == ';' && continuation_after(frame, frame.pos, resume)) {
            frame.pos = resume;
            // The grammar takes one blank between words: the next line's
            // indentation joins the blank before the ';' rather than adding one.
            if (open == NONE && !line.empty() && is_blank(line.back()))
                while (!frame.at_end() && is_blank(frame.current())) ++frame.pos;
            continue;
        }
        ++frame.pos;
        if (open == DOUBLE) {
            if (type == '"') open = NONE;
            line.push_back(token);
            continue;
        }
        if (type == '[' && open == NONE) open = BRACKET;
        else if (type == ']' && open == BRACKET) open = NONE;
        else if (type == '"' && open == NONE) open = DOUBLE;
        else if (type == '\'' && (open == NONE || open == SINGLE)) open = open == NONE ? SINGLE : NONE;
        else if (type == '&' && open != SINGLE && frame.has(frame.pos, '&')) {
            --frame.pos;
            take_comment(frame);
            continue;
        } else if (type == '&' && open == NONE && frame.has(frame.pos, TOKEN_WORD)) {
            macro = true;
            line.push_back(token);
            line.push_back(frame.tokens[frame.pos++]);
            if (frame.has(frame.pos, '.')) ++frame.pos;
            continue;
        }
        if (replace) add_replaced(frame, line, token);
        else line.push_back(token);
    }
    return macro;
}

// A ';' followed by blanks and a line end, or by a && comment that runs to a
// line end, continues the line; `resume` is the first token after that line end.
bool Preprocessor::continuation_after(const frame_st& frame, size_t semicolon, size_t& resume) {
    size_t i = semicolon + 1;
    while (i < frame.tokens.size() && is_blank(frame.tokens[i])) ++i;
    if (frame.has(i, TOKEN_LINE_END)) {
        resume = i + 1;
        return true;
    }
    if (!frame.has(i, '&') || !frame.has(i + 1, '&')) return false;
    size_t line_end = i;
    while (line_end < frame.tokens.size() && frame.tokens[line_end].type != TOKEN_LINE_END) ++line_end;
    if (line_end == frame.tokens.size()) return false;
    comments.insert(comments.end(), frame.tokens.begin() + i, frame.tokens.begin() + line_end);
    resume = line_end + 1;
    return true;
}

// A && comment from frame.pos to the line end, which stays for the line;
// a ';' at a line's end carries the comment on to the next line.
void Preprocessor::take_comment(frame_st& frame) {
    while (!frame.at_end() && frame.current().type != TOKEN_LINE_END) {
        size_t resume;
        if (frame.current().type == ';' && continuation_after(frame, frame.pos, resume)) {
            frame.pos = resume;
            continue;
        }
        comments.push_back(frame.tokens[frame.pos++]);
    }
}

void Preprocessor::add_replaced(const frame_st& frame, token_vector& line, const token_st& token) {
    if (token.type != TOKEN_WORD || no_replacement) {
        line.push_back(token);
        return;
    }
    auto hit = defines_.find(key_of(token));
    if (hit != defines_.end()) {
        for (token_st replacement : hit->second) {
            replacement.location = token.location;
            line.push_back(replacement);
        }
        replaced_words.push_back(token);
        return;
    }
    if (!add_predefined(frame, line, token)) line.push_back(token);
}

// A made-up lexeme: tokenised from its own text, every token at `location`.
void Preprocessor::add_made_up(token_vector& line, const String& text,
                               const document_location_st& location) {
    owned_texts_.push_back(text);
    size_t first = line.size();
    tokenize(owned_texts_.back(), line);
    for (size_t i = first; i < line.size(); ++i) line[i].location = location;
}

namespace {

String string_literal(const String& text) {
    std::string utf8 = text.u8str();
    const char* quotes[] = {"\"", "'", "["};
    const char* closers[] = {"\"", "'", "]"};
    size_t q = 0;
    while (q < 2 && utf8.find(closers[q]) != std::string::npos) ++q;
    return String((quotes[q] + utf8 + closers[q]).c_str());
}

String folder_of(const String& file_name) {
    return String(std::filesystem::path(file_name.u8str()).parent_path().u8string().c_str());
}

String decimal(uint32_t n) { return String(std::to_string(n).c_str()); }

}  // namespace

bool Preprocessor::add_predefined(const frame_st& frame, token_vector& line, const token_st& word) {
    const document_location_st& at = word.location;
    String text;
    if (token_is_word(word, "__line__")) text = decimal(at.start.line);
    else if (token_is_word(word, "__column__")) text = decimal(at.start.column);
    else if (token_is_word(word, "__offset__")) text = decimal(at.start.offset_chars);
    else if (token_is_word(word, "__file__")) text = string_literal(frame.file_name);
    else if (token_is_word(word, "__dir__")) text = string_literal(folder_of(frame.file_name));
    else if (token_is_word(word, "__ZO__")) text = String(".T.");
#ifdef _WIN32
    else if (token_is_word(word, "__windows__")) text = String(".T.");
#else
    else if (token_is_word(word, "__windows__")) text = String(".F.");
#endif
    else return false;
    add_made_up(line, text, at);
    return true;
}

void Preprocessor::parse(frame_st& frame, ParserToken start, const token_vector& line) {
    line_parse_result_st result{0, {}, -1};
    client_.parse_line(client_.context, start, line.data(), line.data() + line.size(), result);
    if (result.error) {
        record(DIAGNOSTIC_PARSER, result.error, result.error_location, frame);
        return;
    }
    if (result.statement_type == STATEMENT_TEXT) text_mode_ = true;
    else if (result.statement_type == STATEMENT_ENDTEXT) text_mode_ = false;
}

void Preprocessor::record(int32_t category, int32_t number, const document_location_st& location,
                          const frame_st& frame) {
    errors.push_back({category, number, location, include_depth_ ? frame.file_name : String()});
}

Preprocessor::directive_handler Preprocessor::find_directive(const token_st& word) {
    struct directive_st {
        const char* name;
        directive_handler handler;
    };
    static const directive_st directives[] = {
        {"!", directive_shebang},    {"define", directive_define}, {"else", directive_else},
        {"endif", directive_endif},  {"error", directive_error},   {"if", directive_if},
        {"ifdef", directive_ifdef},  {"ifndef", directive_ifndef}, {"include", directive_include},
        {"undef", directive_undef},
    };
    for (const directive_st& d : directives)
        if (token_is_word(word, d.name)) return d.handler;
    return nullptr;
}

// The rest of the directive's line: blanks at its end dropped, the line end consumed.
namespace {

token_vector trimmed(token_vector tokens) {
    while (!tokens.empty() && is_blank(tokens.back())) tokens.pop_back();
    return tokens;
}

[[noreturn]] void fail_at(int32_t number, const token_vector& rest, const document_location_st& fallback) {
    throw DirectiveFailure(number, rest.empty() ? fallback : rest.front().location);
}

}  // namespace

int Preprocessor::directive_shebang(Preprocessor& self, frame_st& frame) {
    bool first_line = self.directive_hash_ == 0 && self.include_depth_ == 0;
    if (!first_line) return 1;
    frame.pos = self.directive_hash_;
    while (!frame.at_end() && frame.current().type != TOKEN_LINE_END)
        self.comments.push_back(frame.tokens[frame.pos++]);
    if (!frame.at_end()) ++frame.pos;
    return 0;
}

int Preprocessor::directive_define(Preprocessor& self, frame_st& frame) {
    if (frame.at_end() || frame.current().type != TOKEN_WORD)
        throw DirectiveFailure(ERR_SYNTAX, frame.at_end() ? self.directive_location_ : frame.current().location);
    const token_st name = frame.tokens[frame.pos++];
    token_vector body;
    self.read_logical_line(frame, body, true, false);
    body = trimmed(std::move(body));
    while (!body.empty() && is_blank(body.front())) body.erase(body.begin());
    self.defines_[key_of(name)] = std::move(body);
    return 0;
}

int Preprocessor::directive_undef(Preprocessor& self, frame_st& frame) {
    token_vector rest;
    self.read_logical_line(frame, rest, false, false);
    rest = trimmed(std::move(rest));
    if (rest.size() != 1 || rest[0].type != TOKEN_WORD) fail_at(ERR_SYNTAX, rest, self.directive_location_);
    self.defines_.erase(key_of(rest[0]));
    return 0;
}

int Preprocessor::directive_error(Preprocessor& self, frame_st& frame) {
    token_vector rest;
    self.read_logical_line(frame, rest, true, false);
    throw DirectiveFailure(ERR_USER_DEFINED, self.directive_location_);
}

int Preprocessor::push_condition(frame_st& frame, bool taking) {
    bool parent_active = frame.active();
    taking = taking && parent_active;
    frame.conditions.push_back({parent_active, taking, taking, false, directive_location_});
    return 0;
}

namespace {

bool is_predefined(const token_st& name) {
    static const char* names[] = {"__column__", "__ZO__",     "__dir__",    "__file__",
                                  "__line__",   "__offset__", "__windows__"};
    for (const char* n : names)
        if (token_is_word(name, n)) return true;
    return false;
}

bool name_is_defined(void* context, const token_st& name) {
    const Preprocessor* self = static_cast<const Preprocessor*>(context);
    return is_predefined(name) ||
           self->is_defined(name.value.begin, name.value.begin + name.value.size, name.value.charset);
}

}  // namespace

bool Preprocessor::evaluate_condition(frame_st& frame) {
    token_vector raw, rest;
    read_logical_line(frame, raw, false, false);
    replace_outside_defined(frame, raw, rest);
    return evaluate_directive_condition(rest.data(), rest.data() + rest.size(), directive_location_,
                                        name_is_defined, this);
}

// #define replacement for a condition, except for the name that defined() tests.
void Preprocessor::replace_outside_defined(const frame_st& frame, const token_vector& raw,
                                           token_vector& rest) {
    for (size_t i = 0; i < raw.size(); ++i) {
        if (!token_is_word(raw[i], "defined")) {
            add_replaced(frame, rest, raw[i]);
            continue;
        }
        rest.push_back(raw[i]);
        while (i + 1 < raw.size() && (is_blank(raw[i + 1]) || raw[i + 1].type == '('))
            rest.push_back(raw[++i]);
        if (i + 1 < raw.size()) rest.push_back(raw[++i]);
    }
}

int Preprocessor::directive_if(Preprocessor& self, frame_st& frame) {
    if (!frame.active()) {
        self.skip_inactive_line(frame);
        return self.push_condition(frame, false);
    }
    return self.push_condition(frame, self.evaluate_condition(frame));
}

namespace {

// The one word after #ifdef or #ifndef.
token_st defined_name(const token_vector& rest, const document_location_st& directive) {
    token_vector words = trimmed(rest);
    if (words.size() != 1 || words[0].type != TOKEN_WORD) fail_at(ERR_SYNTAX, words, directive);
    return words[0];
}

}  // namespace

int Preprocessor::directive_ifdef(Preprocessor& self, frame_st& frame) {
    token_vector rest;
    self.read_logical_line(frame, rest, false, false);
    if (!frame.active()) return self.push_condition(frame, false);
    token_st name = defined_name(rest, self.directive_location_);
    return self.push_condition(frame, name_is_defined(&self, name));
}

int Preprocessor::directive_ifndef(Preprocessor& self, frame_st& frame) {
    token_vector rest;
    self.read_logical_line(frame, rest, false, false);
    if (!frame.active()) return self.push_condition(frame, false);
    token_st name = defined_name(rest, self.directive_location_);
    return self.push_condition(frame, !name_is_defined(&self, name));
}

int Preprocessor::directive_else(Preprocessor& self, frame_st& frame) {
    self.skip_inactive_line(frame);
    if (frame.conditions.empty() || frame.conditions.back().seen_else)
        throw DirectiveFailure(ERR_IF_ELSE_ENDIF_MISSING, self.directive_location_);
    condition_st& c = frame.conditions.back();
    c.taking = c.parent_active && !c.branch_taken;
    c.branch_taken = true;
    c.seen_else = true;
    return 0;
}

int Preprocessor::directive_endif(Preprocessor& self, frame_st& frame) {
    self.skip_inactive_line(frame);
    if (frame.conditions.empty()) throw DirectiveFailure(ERR_IF_ELSE_ENDIF_MISSING, self.directive_location_);
    frame.conditions.pop_back();
    return 0;
}

namespace {

// The file name of an #include: in quotes, brackets or angle brackets, or bare.
String include_name(const token_vector& rest) {
    size_t first = 0, last = rest.size();
    if (last >= 2) {
        uint32_t open = rest.front().type, close = rest.back().type;
        if ((open == '"' && close == '"') || (open == '\'' && close == '\'') ||
            (open == '[' && close == ']') || (open == '<' && close == '>')) {
            ++first;
            --last;
        }
    }
    std::string utf8;
    for (size_t i = first; i < last; ++i)
        utf8 += String::create_from_scan_string(rest[i].value).u8str();
    return String(utf8.c_str());
}

bool is_file(const std::filesystem::path& path) {
    std::error_code ignored;
    return std::filesystem::is_regular_file(path, ignored);
}

}  // namespace

std::filesystem::path Preprocessor::find_include(const frame_st& frame,
                                                 const std::filesystem::path& name) const {
    if (name.is_absolute()) return is_file(name) ? name : std::filesystem::path();
    if (frame.file_name.size()) {
        std::filesystem::path beside =
            std::filesystem::path(frame.file_name.u8str()).parent_path() / name;
        if (is_file(beside)) return beside;
    }
    for (const std::filesystem::path& folder : include_path)
        if (is_file(folder / name)) return folder / name;
    return {};
}

int Preprocessor::directive_include(Preprocessor& self, frame_st& frame) {
    const document_location_st directive = self.directive_location_;
    token_vector rest;
    self.read_logical_line(frame, rest, false, false);
    rest = trimmed(std::move(rest));
    String name = include_name(rest);
    if (name.size() == 0) throw DirectiveFailure(ERR_INVALID_PATH, directive);
    std::filesystem::path path = self.find_include(frame, std::filesystem::path(name.u8str()));
    if (path.empty()) throw DirectiveFailure(ERR_FILE_NOT_FOUND, directive);
    if (self.include_depth_ >= MAX_INCLUDE_DEPTH) throw DirectiveFailure(ERR_NESTING_TOO_DEEP, directive);
    return self.include_file(frame, path, directive);
}

int Preprocessor::include_file(frame_st& frame, const std::filesystem::path& path,
                               const document_location_st& location) {
    ZO_TRACE();
    std::ifstream in(path, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in.good() && !in.eof()) throw DirectiveFailure(ERR_FILE_READ, location);
    const Charset* charset = frame.tokens[0].value.charset;
    owned_texts_.push_back(String::fromBytes(bytes.data(), bytes.size(), charset));
    frame_st included;
    included.file_name = String(path.u8string().c_str());
    tokenize(owned_texts_.back(), included.tokens);
    ++include_depth_;
    int result = walk(included);
    --include_depth_;
    return result;
}

}  // namespace zobase
