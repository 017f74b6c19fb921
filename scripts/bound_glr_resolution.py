#!/usr/bin/env python3
"""Copies bison's GLR parser, bounding the recursion that settles deferred
actions.

While a line is ambiguous the GLR parser defers its actions. When the line
becomes one parse again it settles them by recursion: yyresolveValue calls
itself once per deferred action below the one it settles, with a frame of some
kilobytes each. Bison has no hook there, so this script renames the generated
yyresolveValue and puts a wrapper in its place that asks
grammar_enter_resolution (frontend/parser.h) first. A line that would recurse
deeper than the parser allows ends the parse as "memory exhausted", which the
driver reports as error 9013.

usage: bound_glr_resolution.py GENERATED.cpp OUTPUT.cpp
"""
import sys

DEFINITION = ("static YYRESULTTAG\n"
              "yyresolveValue (yyGLRState* yys, yyGLRStack* yystackp, zobase::ParseContext* ctx)\n"
              "{\n")

BOUNDED = ("static YYRESULTTAG\n"
           "yyresolveValueUnbounded (yyGLRState* yys, yyGLRStack* yystackp, zobase::ParseContext* ctx);\n"
           "\n"
           "static YYRESULTTAG\n"
           "yyresolveValue (yyGLRState* yys, yyGLRStack* yystackp, zobase::ParseContext* ctx)\n"
           "{\n"
           "  if (!zobase::grammar_enter_resolution (ctx))\n"
           "    return yynomem;\n"
           "  YYRESULTTAG yyflag = yyresolveValueUnbounded (yys, yystackp, ctx);\n"
           "  zobase::grammar_leave_resolution (ctx);\n"
           "  return yyflag;\n"
           "}\n"
           "\n"
           "static YYRESULTTAG\n"
           "yyresolveValueUnbounded (yyGLRState* yys, yyGLRStack* yystackp, zobase::ParseContext* ctx)\n"
           "{\n")


def main():
    source_path, output_path = sys.argv[1], sys.argv[2]
    with open(source_path, encoding="utf-8") as source:
        text = source.read()
    found = text.count(DEFINITION)
    if found != 1:
        sys.exit(f"{source_path}: expected one definition of yyresolveValue, found {found}; "
                 "has the bison skeleton changed?")
    with open(output_path, "w", encoding="utf-8") as output:
        output.write(text.replace(DEFINITION, BOUNDED))


if __name__ == "__main__":
    main()
