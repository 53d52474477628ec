#!/usr/bin/env bash
# Fails when a tracked C++ file no longer matches .clang-format.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
cd "$root"
if git rev-parse --git-dir >/dev/null 2>&1; then
  files=$(git ls-files '*.cpp' '*.h')
else
  files=$(find . -name '*.cpp' -o -name '*.h' | grep -v '^./build')
fi
echo "$files" | xargs clang-format --dry-run -Werror
echo "format: $(echo "$files" | wc -l) files match .clang-format"
