#!/bin/bash
# Every C++ file is as clang-format 14 leaves it; `tools/checks/format.sh --fix` makes it so.
set -uo pipefail
cd "$(dirname "$0")/../.."
files() { git ls-files -z --cached --others --exclude-standard -- '*.h' '*.cpp' '*.c' '*.inl' | xargs -0 -r ls -d 2>/dev/null; }
if [ "${1:-}" = --fix ]; then
  files | xargs -r clang-format-14 -i
  exit
fi
wrong=$(files | xargs -r clang-format-14 --dry-run -Werror 2>&1 | sed -nE 's/^([^:]+):[0-9]+:.*/\1/p' | sort | uniq -c)
[ -z "$wrong" ] && exit 0
echo "$wrong" | sed 's/^ *\([0-9]*\) /\1 places in /'
echo "format: run tools/checks/format.sh --fix"
exit 1
