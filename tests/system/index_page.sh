#!/usr/bin/env bash
# The demo's page in a real browser: all pictures load, nothing is logged, it fits a narrow window, and it follows
# the colours that the reader's system prefers.
# usage: index_page.sh VARNET
set -euo pipefail
varnet=$1
browser=$(command -v chromium || command -v chromium-browser || true)
if [ -z "$browser" ]; then
    echo "SKIPPED: Chromium is not installed (apt-get install chromium)"
    exit 77
fi
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
fail() { echo "FAILED: $*"; exit 1; }

"$varnet" demo "$work/made" >"$work/out" || { cat "$work/out"; fail "the demo"; }
cd "$work/made"

# browse FILE OPTIONS...: the page as the browser has it goes to ../dom, what it logs to ../log. No network.
browse() {
    local file=$1
    shift
    HOME=$work timeout 120 "$browser" --headless --no-sandbox --disable-gpu --enable-unsafe-swiftshader --disable-dev-shm-usage \
        --user-data-dir="$work/profile" --host-resolver-rules='MAP * ~NOTFOUND' --enable-logging=stderr \
        --virtual-time-budget=10000 "$@" --dump-dom "file://$PWD/$file" >../dom 2>../log ||
        { tail -n 20 ../log; fail "the browser did not open $file"; }
    grep -q '</html>' ../dom || { tail -n 20 ../log; fail "the browser shows no page for $file"; }
}

browse index.html
grep -q '<h1>' ../dom || fail "the page has no title"
! grep 'CONSOLE' ../log || fail "the browser's console has messages"

# The same page with a word at its end that says what became of it.
cat >probe <<'HTML'
<script>
addEventListener('error', event => { document.documentElement.dataset.broken = '1'; }, true);
addEventListener('load', () => {
    const root = document.documentElement;
    for (const image of document.images) {
        root.appendChild(document.createComment(
            `picture ${image.getAttribute('src')} ${image.naturalWidth > 0 ? 'loaded' : 'missing'} ${image.alt ? 'told' : 'untold'} `));
    }
    root.appendChild(document.createComment(`scroll ${root.scrollWidth > innerWidth ? 'wide' : 'fits'} `));
    root.appendChild(document.createComment(`ground ${getComputedStyle(document.body).backgroundColor.replace(/ /g, '')} `));
});
</script>
HTML
cat index.html probe >probe.html
browse probe.html --window-size=1280,1000
pictures=$(grep -c '<img' index.html)
[ "$pictures" -ge 8 ] || fail "the page shows $pictures pictures"
[ "$(grep -o 'picture [^ ]* loaded told' ../dom | wc -l)" -eq "$pictures" ] ||
    { grep -o 'picture [^ ]* [a-z]* [a-z]*' ../dom; fail "pictures that did not load, or have no words"; }
grep -q 'scroll fits' ../dom || fail "the page is wider than a wide window"
light=$(grep -o 'ground [^ ]*' ../dom)
browse probe.html --window-size=500,900
grep -q 'scroll fits' ../dom || fail "the page is wider than a narrow window"
browse probe.html --blink-settings=preferredColorScheme=0
[ "$(grep -o 'ground [^ ]*' ../dom)" != "$light" ] || fail "the page does not follow a dark system"

# A picture that is broken, and one that is not there, are noticed.
printf '<svg' >bracket.svg
rm bracket_support.svg
browse probe.html
[ "$(grep -o 'picture [^ ]* missing' ../dom | sort | tr '\n' ' ')" = "picture bracket.svg missing picture bracket_support.svg missing " ] ||
    { grep -o 'picture [^ ]* [a-z]*' ../dom; fail "a broken picture is not noticed"; }
exit 0
