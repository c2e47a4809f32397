#!/bin/bash
# Checks that every source file is formatted as by clang-format, and prints the lines that are not.
cd "$(dirname "$0")/.." && find src tools tests bench demo -name '*.cpp' -o -name '*.h' |
  xargs clang-format-14 --dry-run -Werror
