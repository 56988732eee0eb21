#!/usr/bin/env bash
# Shows a report to a browser: it must fit a phone, be dark where the reader wants it dark, and need
# nothing but itself.
#
#   report_browser_test.sh PAGE.html [CHROMIUM]
#
# Ends with 0 when all is well, 1 when something is not, 77 without a browser.
set -euo pipefail

page=$(realpath -- "$1")
chromium=${2:-/usr/bin/chromium}
if ! [ -x "$chromium" ]; then
    echo "needs browser: there is none at $chromium"
    exit 77
fi

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cp -- "$page" "$folder/report.html"

# The page has no script of its own, so a frame around it looks in. A browser's window is never as
# narrow as a phone, but a frame is.
cat >"$folder/look.html" <<'HTML'
<!DOCTYPE html>
<meta charset="utf-8">
<meta name="color-scheme" content="light dark">
<body style="margin:0"><iframe style="border:0"></iframe><pre>no answer</pre>
<script>
const [width, height] = location.hash.slice(1).split('x').map(Number);
const frame = document.querySelector('iframe');
frame.width = width;
frame.height = height;
const brightness = color => {
  const [r, g, b] = color.match(/[\d.]+/g).map(part => {
    const share = part / 255;
    return share <= 0.03928 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const opaque = color => !/, 0\)$/.test(color);
function groundOf(element) {
  for (let at = element; at; at = at.parentElement) {
    const color = at.ownerDocument.defaultView.getComputedStyle(at).backgroundColor;
    if (opaque(color)) return color;
  }
  return 'rgb(255, 255, 255)';
}
function lowestContrast(view) {
  let lowest = 21;
  for (const element of view.document.body.querySelectorAll('*')) {
    if (![...element.childNodes].some(node => node.nodeType === 3 && node.data.trim())) continue;
    if (element.localName === 'title') continue;
    const style = view.getComputedStyle(element);
    const ink = brightness(element instanceof view.SVGElement ? style.fill : style.color);
    const ground = brightness(groundOf(element));
    const [dark, light] = [ink, ground].sort((a, b) => a - b);
    lowest = Math.min(lowest, (light + 0.05) / (dark + 0.05));
  }
  return lowest;
}
frame.onload = () => {
  const view = frame.contentWindow;
  const root = view.document.documentElement;
  const beyond = [...view.document.body.querySelectorAll('*')]
      .filter(element => element.getBoundingClientRect().right > view.innerWidth + 0.5).length;
  const dark = brightness(view.getComputedStyle(view.document.body).backgroundColor) < 0.1;
  // A file that is missing leaves no entry behind, so what would ask for one counts as well.
  const loaded = view.performance.getEntriesByType('resource').length +
      view.document.querySelectorAll(
          '[src], [href], [srcset], [data], script, link, iframe, object, embed').length +
      [...view.document.querySelectorAll('style, [style]')]
          .filter(element => /url\(|@import/.test(element.outerHTML)).length;
  document.querySelector('pre').textContent = [
    `width ${view.innerWidth}`,
    `overflow ${root.scrollWidth > view.innerWidth || beyond > 0}`,
    `dark ${dark}`,
    `contrast ${lowestContrast(view) >= 4.5 ? 'enough' : lowestContrast(view).toFixed(2)}`,
    `loaded ${loaded}`,
    `heading ${view.document.querySelector('h1').textContent}`,
  ].join('; ');
};
frame.src = 'report.html';
</script>
HTML

# Prints what the frame saw. $1: size, $2: colour scheme, 0 is dark and 1 light. No name resolves,
# so that a page that asks for more than itself is one that fails.
look() {
    timeout 60 "$chromium" --headless=new --no-sandbox --disable-gpu \
        --user-data-dir="$folder/profile" --allow-file-access-from-files \
        --host-resolver-rules='MAP * ~NOTFOUND' --blink-settings="preferredColorScheme=$2" \
        --window-size=1400,1000 --virtual-time-budget=5000 --dump-dom \
        "file://$folder/look.html#$1" 2>"$folder/errors" |
        sed -n 's/.*<pre>\(.*\)<\/pre>.*/\1/p'
}

failures=0
# $1: what was seen, $2: what should have been
expect() {
    if [ "$1" = "$2" ]; then
        echo "ok: $1"
        return
    fi
    printf 'seen:     %s\nexpected: %s\n' "$1" "$2"
    cat "$folder/errors"
    failures=$((failures + 1))
}

for size in 360x800 1280x900; do
    for scheme in 0 1; do
        dark=true
        [ "$scheme" = 0 ] || dark=false
        expect "$(look "$size" "$scheme")" "width ${size%x*}; overflow false; dark $dark; \
contrast enough; loaded 0; heading Internet time"
    done
done
[ "$failures" = 0 ]
