// Text merge: TEXT blocks, the `\` and `\\` lines, and SET TEXTMERGE.
// The compiler hands over pairs: 0 and a literal, or 1 and a field's value,
// which is turned into text here.
#include <string>

#include "base/call_trace.h"
#include "builtins/arguments.h"
#include "builtins/handlers.h"
#include "values/symtable.h"
#include "vm/runtime_services.h"
#include "vm/screen.h"
#include "vm/vm_stack.h"

namespace zobase {

namespace {

enum TextFlags : long long { TEXT_NOSHOW = 1, TEXT_ADDITIVE = 2 };

// Flag bits of SET TEXTMERGE in the order of its option list.
enum SetTextmergeFlags : long long {
    SET_TEXTMERGE_ON = 1,
    SET_TEXTMERGE_OFF = 2,
    SET_TEXTMERGE_SHOW = 4,
    SET_TEXTMERGE_NOSHOW = 8,
    SET_TEXTMERGE_ADDITIVE = 16,
    SET_TEXTMERGE_TO = 32,
};

// Pairs from argument `first` on.
std::string merge_pairs(VmStack* stack, unsigned long long argc, unsigned long long first) {
    std::string text;
    for (unsigned long long i = first; i + 1 <= argc; i += 2) {
        const Variant& value = argument(stack, i + 1);
        if (argument(stack, i).integer == 0) text += value.str().u8str();
        else text += value.to_string_regional(stack, false).u8str();
    }
    return text;
}

std::string with_pretext(const std::string& text, const std::string& pretext) {
    if (pretext.empty()) return text;
    std::string result = pretext;
    for (char c : text) {
        result += c;
        if (c == '\n') result += pretext;
    }
    return result;
}

void show_text(VmStack* stack, const String& text, bool linefeed) {
    Screen* screen = stack->services->screen();
    screen->lock_for_output();
    screen->out(text);
    if (linefeed) screen->outendl();
    screen->unlock_output();
}

Memvar* textmerge_target(VmStack* stack) {
    Memvar* target;
    stack->alloc_undefined_memvar(stack->textmerge_memvar, &target);
    return target;
}

void append_to_target(VmStack* stack, const std::string& text) {
    Memvar* target = textmerge_target(stack);
    std::string collected = target->tag == TAG_STRING ? target->str().u8str() : std::string();
    target->release(stack);
    target->set_string(String((collected + text).c_str()));
}

void reset_target(VmStack* stack) {
    Memvar* target = textmerge_target(stack);
    target->release(stack);
    target->set_string(String(""));
}

}  // namespace

// Arguments: flags, the TO target's value for ADDITIVE, PRETEXT, then pairs.
void stackcall_text(VmStack* stack, unsigned long long argc, Variant* result) {
    ZO_TRACE();
    long long flags = argument(stack, 1).integer;
    const Variant& previous = argument(stack, 2);
    const Variant& pretext = argument(stack, 3);
    std::string text = merge_pairs(stack, argc, 4);
    if (pretext.tag == TAG_STRING) text = with_pretext(text, pretext.str().u8str());
    if ((flags & TEXT_ADDITIVE) && previous.tag == TAG_STRING) text = previous.str().u8str() + text;
    String merged(text.c_str());
    if (!(flags & TEXT_NOSHOW)) show_text(stack, merged, true);
    result->set_string(merged);
}

// Argument 1 says whether the line ends (`\`) or not (`\\`).
void void_stackcall_textmerge(VmStack* stack, unsigned long long argc) {
    ZO_TRACE();
    bool linefeed = argc >= 1 && argument(stack, 1).integer != 0;
    std::string text = merge_pairs(stack, argc, 2);
    if (stack->textmerge_memvar) append_to_target(stack, linefeed ? text + "\n" : text);
    if (stack->textmerge_show) show_text(stack, String(text.c_str()), linefeed);
}

// Arguments: the flag word, the TO MEMVAR name, the window (unused here).
void void_stackcall_set_textmerge_to(VmStack* stack, unsigned long long argc) {
    ZO_TRACE();
    long long flags = argument(stack, 1).integer;
    if (flags & SET_TEXTMERGE_ON) stack->textmerge = true;
    if (flags & SET_TEXTMERGE_OFF) stack->textmerge = false;
    if (flags & SET_TEXTMERGE_SHOW) stack->textmerge_show = true;
    if (flags & SET_TEXTMERGE_NOSHOW) stack->textmerge_show = false;
    if (flags & SET_TEXTMERGE_TO) stack->textmerge_memvar = 0;
    if (argc >= 2 && argument(stack, 2).tag == TAG_STRING) {
        stack->textmerge_memvar = stack->services->symbols().symbolize(argument(stack, 2).str());
        if (!(flags & SET_TEXTMERGE_ADDITIVE)) reset_target(stack);
    }
}

}  // namespace zobase
