#!/bin/bash
# Every source file is as clang-format leaves it.
cd "$(dirname "$0")/.." && git ls-files -z '*.cpp' '*.h' | xargs -0 clang-format-14 --dry-run -Werror
