// Screen: output buffering and locking shared by every screen.
#include "vm/screen.h"

#include <mutex>

#include "text/charset.h"
#include "values/error.h"

namespace zobase {

struct ScreenRecord {
    std::unique_ptr<Concat> buffer;  // the active output buffer, if any
    bool interactive = false;
    std::mutex lock;
};

Screen::Screen() : record_(std::make_unique<ScreenRecord>()) {}
Screen::~Screen() = default;

size_t Screen::read(char*, size_t, size_t, const Charset**) { return 0; }
void Screen::errendl() { internal_err(String("\n")); }
void Screen::set_output_charset(const Charset*) {}
void Screen::set_input_charset(const Charset*) {}
int Screen::msgbox(const String&, const String&, int, int, int) { return 0; }
void Screen::clear() {}
void Screen::header(ScrHeaderTypes, const String&, bool) {}
void Screen::on_load_module(VmStack*, const String&) {}
void Screen::modify_command(VmStack*, const String&) { raise_not_available("modify command"); }
void Screen::browse(VmStack*) { raise_not_available("browse"); }
void Screen::wait(VmStack*) { raise_not_available("wait"); }
void Screen::flush() {}

void Screen::out(const String& text) {
    if (record_->buffer) record_->buffer->append(text);
    else internal_out(text);
}

void Screen::outendl(const String& text) {
    out(text);
    outendl();
}

void Screen::outendl() { out(String("\n")); }

// Errors never enter the output buffer.
void Screen::err(const String& text) { internal_err(text); }

void Screen::errendl(const String& text) {
    internal_err(text);
    errendl();
}

// A second start keeps the active buffer: buffers do not nest.
void Screen::ob_start() {
    if (!record_->buffer) record_->buffer = std::make_unique<Concat>();
}

void Screen::ob_end_clean() { record_->buffer.reset(); }

void Screen::ob_end_flush() {
    if (!record_->buffer) return;
    std::unique_ptr<Concat> buffer = std::move(record_->buffer);
    internal_out(buffer->to_string());
}

void Screen::ob_get(String* out) const {
    *out = record_->buffer ? record_->buffer->to_string() : String("");
}

bool Screen::has_output_buffer() const { return record_->buffer != nullptr; }

void Screen::lock_for_output() { record_->lock.lock(); }

void Screen::unlock_output() {
    flush();
    record_->lock.unlock();
}

void Screen::set_interactive(bool interactive) { record_->interactive = interactive; }
bool Screen::is_interactive() const { return record_->interactive; }

}  // namespace zobase
