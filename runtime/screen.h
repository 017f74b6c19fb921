#pragma once
// The console screen and the host's calls on screens. The Screen class
// itself, which every layer from the VM up writes through, is in vm/screen.h.
#include "base/export.h"
#include "vm/screen.h"

namespace zobase {

class Charset;

// The process's console: standard output, error and input.
class ZO_API ConsoleScreen : public Screen {
public:
    const Charset* output_charset;
    const Charset* input_charset;

    ConsoleScreen();
    size_t read(char* buffer, size_t size, size_t count, const Charset** charset) override;
    void set_output_charset(const Charset* charset) override;
    void set_input_charset(const Charset* charset) override;
    int msgbox(const String& text, const String& title, int buttons, int icon, int timeout) override;
    void clear() override;
    void flush() override;
    void internal_out(const String& text) override;
    void internal_err(const String& text) override;
};

ZO_API Screen* CreateScreen(int flags);
ZO_API void ReleaseScreen(Screen* screen);
ZO_API int PrintScreenUtf8(Screen* screen, const char* text);
ZO_API int SetOutputCharset(Screen* screen, const char* name);
ZO_API int SetInputCharset(Screen* screen, const char* name);

constexpr int SCREEN_FLAG_INTERACTIVE = 256;

}  // namespace zobase
