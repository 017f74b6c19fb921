#pragma once
// The one door through which the runtime talks to the user. Hosts supply a
// subclass or take the console screen of runtime/screen.h. Code on a stack
// reaches the runtime's screen through RuntimeServices::screen().
#include <cstddef>
#include <memory>

#include "base/export.h"
#include "values/string.h"

namespace zobase {

class Charset;
class VmStack;
struct ScreenRecord;

enum ScrHeaderTypes : int { SCR_HEADER_NONE = 0 };

class ZO_API Screen {
public:
    Screen();
    virtual ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    virtual size_t read(char* buffer, size_t size, size_t count, const Charset** charset);
    virtual void errendl();
    virtual void set_output_charset(const Charset* charset);
    virtual void set_input_charset(const Charset* charset);
    virtual int msgbox(const String& text, const String& title, int buttons, int icon,
                       int timeout);
    virtual void clear();
    virtual void header(ScrHeaderTypes type, const String& text, bool flag);
    virtual void on_load_module(VmStack* stack, const String& file);
    virtual void modify_command(VmStack* stack, const String& file);
    virtual void browse(VmStack* stack);
    virtual void wait(VmStack* stack);
    virtual void flush();
    virtual void internal_out(const String& text) = 0;
    virtual void internal_err(const String& text) = 0;

    void out(const String& text);
    void outendl(const String& text);
    void outendl();
    void err(const String& text);
    void errendl(const String& text);
    void ob_start();
    void ob_end_clean();
    void ob_end_flush();
    void ob_get(String* out) const;
    bool has_output_buffer() const;
    void lock_for_output();
    void unlock_output();
    void set_interactive(bool interactive);
    bool is_interactive() const;

private:
    std::unique_ptr<ScreenRecord> record_;
};

// The buttons of msgbox, one bit each: `buttons` is a mask of them and the
// answer is the bit of the chosen one. Abort, Retry and Ignore are the bits
// the error dialog asks with.
enum MsgboxButton : int {
    MSGBOX_OK = 1,
    MSGBOX_CANCEL = 2,
    MSGBOX_YES = 4,
    MSGBOX_ABORT = 8,
    MSGBOX_NO = 16,
    MSGBOX_RETRY = 32,
    MSGBOX_IGNORE = 64,
};

}  // namespace zobase
