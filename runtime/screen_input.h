#pragma once
// Line input through a Screen, the way the stream "zo://stdin" reads.
#include "values/string.h"

namespace zobase {

class Screen;

// Reads one line without its line end, in the screen's input charset
// converted to UTF-8. False when the input ended before any character.
bool read_screen_line(Screen* screen, String* line);

}  // namespace zobase
