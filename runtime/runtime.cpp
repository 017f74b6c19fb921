// Runtime construction, start-up and the values it keeps for the host.
#include "runtime/runtime.h"

#include <unicode/ucal.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>
#include <unicode/ustring.h>
#include <langinfo.h>
#include <strings.h>

#include <clocale>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "base/call_trace.h"
#include "builtins/library.h"
#include "objects/object.h"
#include "objects/thread_object.h"
#include "runtime/file_search.h"
#include "runtime/module_cache.h"
#include "runtime/runtime_resolver.h"
#include "runtime/screen.h"
#include "sql/sql_singleton.h"
#include "tables/table_sessions.h"
#include "text/charset.h"
#include "text/collation.h"
#include "text/date_format.h"
#include "values/symtable.h"
#include "vm/session_settings.h"
#include "vm/vm_stack.h"

namespace zobase {

struct RuntimeRecord {
    std::map<String, String, StringLessThan_Unicode_Machine> environment;
    std::string module_file_name;
    Symtable symtable;
    std::vector<String> search_path;  // SET PATH
    std::vector<std::string> arguments;
    std::vector<const char*> argument_pointers;
    ModuleCache module_cache;
    std::unique_ptr<CallResolver> resolver;
    std::unique_ptr<RuntimeServices> services;
    std::unique_ptr<Library> library;
    VmStack* main_stack = nullptr;
    uint64_t next_stack_id = 1;
    DateFormatCache date_formats;
    int32_t first_day_of_week = 1;  // SET FDOW
    std::mutex thread_lock;  // guards the thread map, its ids and the stack ids of threads
    std::map<uint64_t, std::shared_ptr<VmThread>> threads;
    uint64_t next_thread_id = 2;
};

constexpr uint64_t MAIN_STACK_SLOTS = 65536;
constexpr uint64_t MAIN_STACK_UNDO_SLOTS = 8192;
constexpr uint64_t THREAD_STACK_SLOTS = 65536;
constexpr uint64_t THREAD_STACK_UNDO_SLOTS = 8192;

namespace {

std::string utf8_of(const char16_t* text) { return String(text).u8str(); }

void read_first_day_of_week(Runtime* rt, const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    UCalendar* calendar = ucal_open(nullptr, 0, locale, UCAL_DEFAULT, &status);
    if (U_FAILURE(status)) return;
    rt->first_day_of_week = ucal_getAttribute(calendar, UCAL_FIRST_DAY_OF_WEEK);
    ucal_close(calendar);
}

// Reads the decimal and grouping separators of the locale's number format.
void read_separators(Runtime* rt, const char* locale) {
    UErrorCode status = U_ZERO_ERROR;
    UNumberFormat* format = unum_open(UNUM_DECIMAL, nullptr, 0, locale, nullptr, &status);
    if (U_FAILURE(status)) return;
    UChar symbol[10];
    int32_t length = unum_getSymbol(format, UNUM_DECIMAL_SEPARATOR_SYMBOL, symbol, 10, &status);
    if (U_SUCCESS(status) && length > 0) {
        UChar32 c;
        int32_t i = 0;
        U16_NEXT(symbol, i, length, c);
        auto& point = rt->decimal_point;
        point.code_point = static_cast<char32_t>(c);
        String text = String::fromBytes(reinterpret_cast<const char*>(symbol),
                                        static_cast<size_t>(i) * 2, Charset::utf16le);
        char* out = point.encoded;
        point.ascii = text.get_charset()->convert(text.read(), text.end(), out, point.encoded + 4,
                                                  Charset::ascii, CSTRAN_STRICT) == 0;
        if (!point.ascii) {
            out = point.encoded;
            text.get_charset()->convert(text.read(), text.end(), out, point.encoded + 4,
                                        Charset::utf8, CSTRAN_SUBSTITUTE);
        }
        point.length = static_cast<uint8_t>(out - point.encoded);
    }
    status = U_ZERO_ERROR;
    length = unum_getSymbol(format, UNUM_GROUPING_SEPARATOR_SYMBOL, symbol, 10, &status);
    if (U_SUCCESS(status) && length > 0) {
        UChar32 c;
        int32_t i = 0;
        U16_NEXT(symbol, i, length, c);
        rt->group_separator = static_cast<char32_t>(c);
    }
    unum_close(format);
}

// The codeset of the process's character locale or, while the host has left
// it at "C", of the locale the environment names (LC_ALL, LC_CTYPE, LANG).
// Asked through a locale object of its own: the process's stays as it is.
bool locale_codeset_is_utf8() {
    const char* current = std::setlocale(LC_CTYPE, nullptr);
    bool host_chose = current && std::strcmp(current, "C") != 0 && std::strcmp(current, "POSIX") != 0;
    locale_t locale = newlocale(LC_CTYPE_MASK, host_chose ? current : "", static_cast<locale_t>(nullptr));
    if (!locale) return false;
    const char* codeset = nl_langinfo_l(CODESET, locale);
    bool utf8 = codeset && (strcasecmp(codeset, "UTF-8") == 0 || strcasecmp(codeset, "UTF8") == 0);
    freelocale(locale);
    return utf8;
}

// UTF-8 when the locale says so, else the charset of ICU's language and country.
const Charset* machine_charset(const char* icu_locale) {
    if (locale_codeset_is_utf8()) return Charset::utf8;
    char language[16] = {}, country[16] = {};
    UErrorCode status = U_ZERO_ERROR;
    uloc_getLanguage(icu_locale, language, sizeof language, &status);
    uloc_getCountry(icu_locale, country, sizeof country, &status);
    std::string key = std::string(language) + "_" + country;
    return get_charset_by_country_lang(key.c_str());
}

}  // namespace

Runtime::Runtime(Screen* s) : screen(s), impl(new RuntimeRecord) {
    impl->resolver = create_runtime_resolver(this);
    impl->services = create_runtime_services(this);
}

Runtime::~Runtime() { delete impl; }

Runtime* Runtime::create_instance(Screen* screen) {
    auto* runtime = new Runtime(screen);
    runtime->init();
    return runtime;
}

void Runtime::init() {
    ZO_TRACE();
    __init_character_sets();
    __init_collations();
    install_object_destruction();
    impl->library = std::make_unique<Library>(this, &impl->symtable);
    load_library_tables(impl->library.get(), core_module_description());
    const char* locale = uloc_getDefault();
    read_first_day_of_week(this, locale);
    read_separators(this, locale);
    impl->first_day_of_week = first_day_of_week;
    system_date_style = DATE_STYLE_SHORT;
    default_charset = machine_charset(locale);
    attach_runtime_sql(this);
}

VmStack* Runtime::get_main_stack() {
    if (!impl->main_stack) {
        impl->main_stack = new VmStack(this, MAIN_STACK_SLOTS, MAIN_STACK_UNDO_SLOTS);
        attach_stack(impl->main_stack);
    }
    return impl->main_stack;
}

uint64_t Runtime::create_stack_id() { return impl->next_stack_id++; }

// Every stack the runtime makes gets the table engine's data sessions in
// place of the PlainDataSessions it was made with. A stack beside the main
// one can come to hold objects of the others: from then on objects are
// counted and locked for threads.
void Runtime::attach_stack(VmStack* stack) {
    stack->id = create_stack_id();
    if (stack->id > 1) note_objects_shared();
    stack->resolver = call_resolver();
    stack->services = services();
    stack->sessions = std::make_unique<TableDataSessions>(stack);
}

// Threads taken out are ended (joined) and freed outside the lock.
void Runtime::register_thread(const std::shared_ptr<VmThread>& thread) {
    ZO_TRACE();
    std::vector<std::shared_ptr<VmThread>> finished;
    std::lock_guard guard(impl->thread_lock);
    for (auto entry = impl->threads.begin(); entry != impl->threads.end();) {
        if (entry->second.use_count() == 1 && !entry->second->running.load()) {
            finished.push_back(std::move(entry->second));
            entry = impl->threads.erase(entry);
        } else {
            ++entry;
        }
    }
    thread->id = impl->next_thread_id++;
    thread->stack = std::make_unique<VmStack>(this, THREAD_STACK_SLOTS, THREAD_STACK_UNDO_SLOTS);
    attach_stack(thread->stack.get());
    impl->threads.emplace(thread->id, thread);
}

void Runtime::join_threads() {
    std::map<uint64_t, std::shared_ptr<VmThread>> threads;
    {
        std::lock_guard guard(impl->thread_lock);
        threads.swap(impl->threads);
    }
    for (auto& [id, thread] : threads) thread->join();
}

void Runtime::pass_arguments(int argc, const char* const* argv) {
    impl->arguments.assign(argv, argv + argc);
    impl->argument_pointers.clear();
    for (const std::string& argument : impl->arguments)
        impl->argument_pointers.push_back(argument.c_str());
}

void Runtime::pass_arguments(int argc, const char16_t* const* argv) {
    std::vector<std::string> narrow;
    for (int i = 0; i < argc; ++i) narrow.push_back(utf8_of(argv[i]));
    std::vector<const char*> pointers;
    for (const std::string& s : narrow) pointers.push_back(s.c_str());
    pass_arguments(argc, pointers.data());
}

int Runtime::argument_count() const { return static_cast<int>(impl->arguments.size()); }
const char* Runtime::argument(int index) const { return impl->argument_pointers.at(index); }

void Runtime::pass_environment(const char* const* envp) {
    impl->environment.clear();
    for (; envp && *envp; ++envp) {
        std::string entry = *envp;
        size_t equals = entry.find('=');
        std::string key = entry.substr(0, equals);
        std::string value = equals == std::string::npos ? "" : entry.substr(equals + 1);
        impl->environment.insert_or_assign(String(key.c_str()), String(value.c_str()));
    }
}

void Runtime::pass_environment(const char16_t* const* envp) {
    std::vector<std::string> narrow;
    for (; envp && *envp; ++envp) narrow.push_back(utf8_of(*envp));
    std::vector<const char*> pointers;
    for (const std::string& s : narrow) pointers.push_back(s.c_str());
    pointers.push_back(nullptr);
    pass_environment(envp ? pointers.data() : nullptr);
}

// Only the passed environment counts, never the process's own.
bool Runtime::getenv(const String& key, String* out) const {
    auto found = impl->environment.find(key);
    if (found == impl->environment.end()) return false;
    *out = found->second;
    return true;
}

void Runtime::setenv(const String& key, const String& value) {
    impl->environment.insert_or_assign(key, value);
    ::setenv(key.u8str().c_str(), value.u8str().c_str(), 1);
}

bool Runtime::unsetenv(const String& key) {
    ::unsetenv(key.u8str().c_str());
    return impl->environment.erase(key) != 0;
}

std::vector<std::pair<String, String>> Runtime::environment() const {
    return {impl->environment.begin(), impl->environment.end()};
}

void Runtime::set_module_file_name(const char* path) { impl->module_file_name = path; }
void Runtime::set_module_file_name(const char16_t* path) {
    impl->module_file_name = utf8_of(path);
}

bool Runtime::set_codepage_by_id(int id) {
    const Charset* charset = get_charset_by_codepage(id, false);
    if (!charset) return false;
    default_charset = charset;
    return true;
}

bool Runtime::set_codepage_by_name(const char* name) {
    const Charset* charset = get_charset_by_name(name);
    if (!charset) return false;
    default_charset = charset;
    return true;
}

Symtable& Runtime::symbols() { return impl->symtable; }

const date_format_st& Runtime::dateFormat(int32_t style, bool century, const char* mark) {
    return impl->date_formats.date_format(style, century, mark);
}

const datetime_format_st& Runtime::dateTimeFormat(int32_t style, bool century, const char* mark,
                                                  int32_t hours, bool seconds,
                                                  const char* separator, const char* time_mark) {
    return impl->date_formats.datetime_format(style, century, mark, hours, seconds, separator,
                                              time_mark);
}

DateFormatCache& Runtime::date_formats() { return impl->date_formats; }

format_settings_st Runtime::system_formats() const {
    format_settings_st formats;
    if (decimal_point.length > 0) {  // else ICU had no number format: "." stays
        formats.point.code_point = decimal_point.code_point;
        std::memcpy(formats.point.bytes, decimal_point.encoded, sizeof formats.point.bytes);
        formats.point.length = decimal_point.length;
        formats.point.ascii = decimal_point.ascii && decimal_point.length == 1;
    }
    formats.separator = group_separator;
    formats.decimals = system_decimals;
    formats.date_style = system_date_style;
    formats.date_mark[0] = static_cast<char>(system_date_mark);
    formats.date_mark[1] = 0;
    formats.century = system_century != 0;
    formats.hours = system_hours;
    formats.seconds = system_seconds != 0;
    return formats;
}

int32_t Runtime::current_first_day_of_week() const { return impl->first_day_of_week; }
void Runtime::set_first_day_of_week(int32_t day) { impl->first_day_of_week = day; }

bool Runtime::find_file(const String& name, String* found, bool use_search_path,
                        bool default_prg) const {
    static const std::vector<String> no_path;
    const std::vector<String>& path = use_search_path ? impl->search_path : no_path;
    if (zobase::find_file(name, path, found)) return true;
    if (!default_prg || std::filesystem::path(name).has_extension()) return false;
    String with_extension = name;
    with_extension.add(String(".prg"));
    return zobase::find_file(with_extension, path, found);
}

void Runtime::set_path_to(const String& paths, bool additive) {
    if (!additive) set_path_to_null();
    for (const String& entry : split_search_path(paths)) impl->search_path.push_back(entry);
}

void Runtime::set_path_to_null() { impl->search_path.clear(); }

std::vector<String> Runtime::search_path() const { return impl->search_path; }

bool FindFile(Runtime* runtime, const String& name, String& found, bool use_search_path,
              bool default_prg) {
    String hit;
    if (!runtime->find_file(name, &hit, use_search_path, default_prg)) return false;
    found = hit;
    return true;
}

// Built-in classes are registered by the library; a name it lacks is 1733.
Class* GetClass(VmStack* stack, const String* name) {
    Runtime* runtime = stack->runtime;
    uint32_t id = runtime->symbols().symbolize(*name);
    const auto& classes = runtime->library()->classes;
    auto found = classes.find(id);
    if (found == classes.end()) throw RuntimeError(ERR_CLASS_NOT_FOUND, *name);
    return found->second;
}

Library* Runtime::library() { return impl->library.get(); }
ModuleCache& Runtime::module_cache() { return impl->module_cache; }
const CallResolver* Runtime::call_resolver() const { return impl->resolver.get(); }
RuntimeServices* Runtime::services() { return impl->services.get(); }

// For hosts that exit right after: the main-stack pointer is deliberately kept.
void Runtime::shutdown() {
    join_threads();
    // Closes the connections a program left open.
    deattach_runtime_sql(this);
    if (impl->library) unload_library_tables(impl->library.get());
    screen->set_interactive(false);
    delete impl->main_stack;
}

Runtime* CreateRuntime(Screen* screen) { return Runtime::create_instance(screen); }

void ReleaseRuntime(Runtime* runtime) {
    if (!runtime) return;
    runtime->shutdown();
    runtime->impl->main_stack = nullptr;
    delete runtime;
}

int CreateStack(Runtime* runtime, uint64_t size, VmStack** out) {
    *out = new VmStack(runtime, size, size);
    runtime->attach_stack(*out);
    return 0;
}

int GetMainStack(Runtime* runtime, VmStack** out) {
    *out = runtime->get_main_stack();
    return 0;
}

int ReleaseStack(VmStack* stack) {
    delete stack;
    return 0;
}

Runtime* GetRuntime(VmStack* stack) { return stack->runtime; }

void SetRuntimeAsserts(Runtime* runtime, bool on) { runtime->flags.asserts = on; }

}  // namespace zobase
