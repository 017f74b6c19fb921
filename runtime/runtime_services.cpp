// What code on a stack asks of the runtime, answered from the Runtime.
#include "base/call_trace.h"
#include "builtins/native_extensions.h"
#include "objects/exception_object.h"
#include "runtime/runtime.h"
#include "runtime/module_cache.h"
#include "runtime/runtime_resolver.h"
#include "compiler/library.h"
#include "values/error.h"
#include "vm/session_settings.h"
#include "values/symtable.h"

namespace zobase {

namespace {

class RuntimeServicesOfRuntime : public RuntimeServices {
public:
    explicit RuntimeServicesOfRuntime(Runtime* runtime) : runtime_(runtime), extensions_(runtime) {}

    Screen* screen() const override { return runtime_->screen; }
    Screen* replace_screen(Screen* screen) override {
        Screen* replaced = runtime_->screen;
        runtime_->screen = screen;
        return replaced;
    }

    Symtable& symbols() const override { return runtime_->symbols(); }
    const Charset* default_charset() const override { return runtime_->default_charset; }

    bool asserts() const override { return runtime_->flags.asserts; }
    void set_asserts(bool on) override { SetRuntimeAsserts(runtime_, on); }

    void clear_search_path() override { runtime_->set_path_to_null(); }
    void add_search_path(const String& paths) override { runtime_->set_path_to(paths, true); }
    void clear_procedures() override { runtime_->set_procedure_to_null(); }
    void add_procedure(VmStack* stack, const String& file) override {
        runtime_->set_procedure_to(stack, file, true);
    }
    NativeExtensions& native_extensions() override { return extensions_; }

    bool getenv(const String& key, String* out) const override { return runtime_->getenv(key, out); }
    void setenv(const String& key, const String& value) override { runtime_->setenv(key, value); }
    bool unsetenv(const String& key) override { return runtime_->unsetenv(key); }
    std::vector<std::pair<String, String>> environment() const override {
        return runtime_->environment();
    }

    bool find_file(const String& name, String* found) const override {
        return runtime_->find_file(name, found, true, false);
    }
    bool home_directory(String* out) const override { return runtime_->create_home_dir(out); }

    void create_exception_object(const RuntimeError& error, Variant* dest) const override {
        ZO_TRACE();
        // A runtime that was never started has no classes: no object then.
        Class* exception_class = runtime_->library() ? runtime_->library()->find_class(SYMBOL_EXCEPTION) : nullptr;
        if (!exception_class) return;
        ExceptionObject* object = zobase::create_exception_object(exception_class, dest);
        object->error_no.set_integer(error.number);
        object->message.set_string(error.message);
        object->detail.set_string(error.parameter);
    }

    DateFormatCache& date_formats() override { return runtime_->date_formats(); }
    format_settings_st system_formats() const override { return runtime_->system_formats(); }
    int32_t first_day_of_week() const override { return runtime_->current_first_day_of_week(); }
    void set_first_day_of_week(int32_t day) override { runtime_->set_first_day_of_week(day); }
    int32_t system_first_day_of_week() const override { return runtime_->first_day_of_week; }

    std::vector<String> search_path() const override { return runtime_->search_path(); }
    std::vector<String> procedures() const override {
        std::vector<String> files;
        for (const auto& [path, module] : runtime_->module_cache().procedures()) files.push_back(path);
        return files;
    }
    void register_thread(const std::shared_ptr<VmThread>& thread) override { runtime_->register_thread(thread); }

private:
    Runtime* runtime_;
    NativeExtensions extensions_;
};

}  // namespace

std::unique_ptr<RuntimeServices> create_runtime_services(Runtime* runtime) {
    return std::make_unique<RuntimeServicesOfRuntime>(runtime);
}

}  // namespace zobase
