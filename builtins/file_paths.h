#pragma once
// File names as the file functions take them: relative names start at the
// process's current directory (which CD changes), and a name not found as
// written is matched without regard to case, one folder at a time.
#include <filesystem>

#include "values/string.h"

namespace zobase {

class VmStack;

// The path as it is spelled on disk; false when some part of it is missing.
bool find_path_ci(const std::filesystem::path& name, std::filesystem::path* found);

// The file or folder a program names: as written, else found without
// regard to case. An empty name is never found.
bool find_existing(const String& name, std::filesystem::path* found);

// The stream names that read and write through the Screen.
enum ConsoleStream { CONSOLE_NONE, CONSOLE_STDIN, CONSOLE_STDOUT, CONSOLE_STDERR };
ConsoleStream console_stream_of(const String& name);

// Everything standard input still holds, read through the Screen, in the
// charset the screen reads.
String read_console_input(VmStack* stack);

// The charset a program names, or 9003 with the name.
const Charset* charset_argument(const String& name);

}  // namespace zobase
