#!/bin/sh
# zosh at the keyboard through a pseudo-terminal (tests/shell/keyboard.py):
# line editing, history, Ctrl-R and Ctrl-C.
exec /usr/bin/python3 "$(dirname "$0")/keyboard.py" "$1"
