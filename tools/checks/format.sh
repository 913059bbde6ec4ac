#!/bin/bash
# Every C++ file is as clang-format 14 leaves it; `tools/checks/format.sh --fix` makes it so.
set -uo pipefail
cd "$(dirname "$0")/../.."
mode=(--dry-run -Werror)
[ "${1:-}" = --fix ] && mode=(-i)
git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' '*.c' '*.inl' |
  xargs -0 -r ls -d 2>/dev/null | xargs -r clang-format-14 "${mode[@]}"
