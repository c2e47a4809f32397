#!/bin/bash
# Every source file is as clang-format leaves it; names the lines that are not.
cd "$(dirname "$0")/.." && find src tools tests bench fuzz demo -name '*.cpp' -o -name '*.h' |
  xargs clang-format-14 --dry-run -Werror
