// The host's calls on screens.
#include "runtime/screen.h"

#include "text/charset.h"

namespace zobase {

Screen* CreateScreen(int flags) {
    Screen* screen = new ConsoleScreen();
    screen->set_interactive((flags & SCREEN_FLAG_INTERACTIVE) != 0);
    return screen;
}

void ReleaseScreen(Screen* screen) { delete screen; }

int PrintScreenUtf8(Screen* screen, const char* text) {
    screen->out(String(text));
    return 0;
}

int SetOutputCharset(Screen* screen, const char* name) {
    const Charset* charset = get_charset_by_name(name);
    if (!charset) return 1;
    screen->set_output_charset(charset);
    return 0;
}

int SetInputCharset(Screen* screen, const char* name) {
    const Charset* charset = get_charset_by_name(name);
    if (!charset) return 1;
    screen->set_input_charset(charset);
    return 0;
}

}  // namespace zobase
