#include "builtins/handlers.h"
#include "builtins/library.h"
#include "values/variant.h"

namespace zobase {

// The platform flags answer for the platform this build runs on.
void sysvar_windows(VmStack*, unsigned long long, Variant* result) { result->set_false(); }
void sysvar_dos(VmStack*, unsigned long long, Variant* result) { result->set_false(); }
void sysvar_mac(VmStack*, unsigned long long, Variant* result) { result->set_false(); }
void sysvar_unix(VmStack*, unsigned long long, Variant* result) { result->set_true(); }

// The dialect's other reserved names exist and compile, and fail when run.
void sysnoimplrd(VmStack*, unsigned long long, Variant*) {
    raise_not_available("Read system variable");
}
void sysnoimplwr(VmStack*, unsigned long long) { raise_not_available("Write to system variable"); }

const library_variable_row_st core_system_variable_rows[] = {
    {"_ALIGNMENT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_ASCIICOLS", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_ASCIIROWS", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_ASSIST", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_BEAUTIFY", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_BOX", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_BROWSER", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_BUILDER", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_CALCMEM", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_CALCVALUE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_CLIPTEXT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_CODESENSE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_CONVERTER", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_COVERAGE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_CUROBJ", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_DBLCLICK", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_DIARYDATE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_DOS", "", sysvar_dos, "L", ".", sysnoimplwr},
    {"_KESCODE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_KESDOC", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_KESGRAPH", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_KESREF", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_KESTASK", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_GALLERY", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_GENGRAPH", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_GENHTML", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_GENMENU", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_GENPD", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_GENSCRN", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_GENXTAB", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_GETEXPR", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_INCLUDE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_INCSEEK", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_INDENT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_LMARGIN", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_MAC", "", sysvar_mac, "L", ".", sysnoimplwr},
    {"_MENUDESIGNER", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_MLINE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_OBJECTBROWSER", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PADVANCE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PAGENO", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PAGETOTAL", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PBPAGE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PCOLNO", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PCOPIES", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PDRIVER", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PDSETUP", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PECODE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PEJECT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PEPAGE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PLENGTH", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PLINENO", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PLOFFSET", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PPITCH", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PQUALITY", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PRETEXT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PSCODE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PSPACING", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_PWAIT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_REPORTBUILDER", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_REPORTOUTPUT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_REPORTPREVIEW", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_RMARGIN", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_RUNACTIVEDOC", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_SAMPLES", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_SCCTEXT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_SCREEN", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_SHELL", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_SPELLCHK", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_STARTUP", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TABS", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TALLY", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TASKLIST", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TASKPANE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TEXT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_THROTTLE", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TOOLBOX", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TOOLTIPTIMEOUT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TRANSPORT", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_TRIGGERLEVEL", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_UNIX", "", sysvar_unix, "L", ".", sysnoimplwr},
    {"_KFP", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_WINDOWS", "", sysvar_windows, "L", ".", sysnoimplwr},
    {"_WIZARD", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {"_WRAP", "", sysnoimplrd, "L", ".", sysnoimplwr},
    {nullptr, nullptr, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace zobase
