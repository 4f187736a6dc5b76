#!/usr/bin/env bash
# The pages that `varnet view` makes, in a real browser: browser.mjs drives it. What is missing is named, and the test
# skipped. puppeteer-core comes from the registry of npm, once for each build folder.
# usage: browser.sh VARNET BUILD_FOLDER [NAME_OF_A_TEST]
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
varnet=$(readlink -f "$1")
modules=$2/page
skip() { echo "SKIPPED: $*"; exit 77; }
browser=$(command -v chromium || command -v chromium-browser || true)
[ -n "$browser" ] || skip "Chromium is not installed (apt-get install chromium)"
command -v node >/dev/null || skip "Node is not installed (apt-get install nodejs npm)"
if [ ! -d "$modules/node_modules/puppeteer-core" ]; then
    command -v npm >/dev/null || skip "npm is not installed (apt-get install npm)"
    mkdir -p "$modules"
    cp "$here/package.json" "$modules"
    (cd "$modules" && npm install --no-audit --no-fund --ignore-scripts >npm.log 2>&1) ||
        skip "puppeteer-core could not be had from npm"
fi
cp "$here"/*.mjs "$modules"
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
HOME=$work VARNET=$varnet BROWSER=$browser WORK=$work node "$modules/browser.mjs" "${@:3}"
