#!/usr/bin/env bash
# Runs the tool as a user would and checks exit statuses, messages and outputs.
# usage: run_tool.sh TOOL EXAMPLES
tool=$1
examples=$2
place=$(mktemp -d)
trap 'rm -rf "$place"' EXIT
cd "$place" || exit 1
failures=0

# expect STATUS TEXT ARGUMENT...: the exit status, and a text that occurs in the output or the messages.
expect() {
    local status=$1 text=$2
    shift 2
    "$tool" "$@" >out.txt 2>err.txt <in.txt
    local got=$?
    if [ $got -ne "$status" ] || ! cat out.txt err.txt - <<<"" | grep -qF -- "$text"; then
        echo "FAILED: tessera $* gave status $got, wanted $status and \"$text\":"
        head -n 5 out.txt err.txt
        failures=$((failures + 1))
    fi
}
check() { "$@" || { echo "FAILED: $*"; failures=$((failures + 1)); }; }

echo '{"id":"in","points":[[0,0],[100,0],[100,80],[0,80],[0,0]]}' >in.txt
cp in.txt good.json
printf '0,0\n1,nan\n' >nan.csv
printf '' >empty.json
printf '{"points":[[0,0],' >broken.json
printf '{"strokes":[[[0,0],[9,9]],[[5,5]]]}' >partly.json
printf '{"id":"a","points":[[0,0],[9,9]]}\nnonsense\n{"id":7,"points":[[0,0],[9,0]]}\n' >lines.ndjson

expect 0 "Usage" --help
expect 0 "AskTangentAngleThreshold=50" recognize --help
expect 0 "tessera " --version
expect 2 "subcommand"
expect 2 "INPUT" recognize
expect 2 "--colour" recognize --colour good.json
expect 2 "--to" recognize --to dxf good.json

expect 0 "4 lines" recognize -
expect 0 '"id":"in"' recognize --to json -
expect 2 "tessera: nan.csv: line 2: \"nan\" is not a finite number" recognize nan.csv
expect 2 "tessera: empty.json: the file is empty" recognize empty.json
expect 2 "tessera: broken.json: parse error at line 1, column" recognize broken.json
expect 2 "tessera: missing.json: No such file or directory" recognize missing.json
expect 2 "is a directory" recognize .
expect 2 "4 lines" recognize nan.csv good.json
expect 1 "tessera: partly.json: stroke 1: fewer than two points" recognize partly.json
expect 1 "1 line" recognize --quiet partly.json
check test ! -s err.txt

expect 1 "tessera: lines.ndjson: line 2: " recognize --to json lines.ndjson
check test "$(wc -l <out.txt)" -eq 3
check grep -q '^{"id":"a","strokes":\[{"index":0,"points":2,"curves":\[{"kind":"line","from":0,"to":1,' out.txt
check grep -q '"id":7' out.txt

expect 2 "Invalid tangent angle threshold specified" recognize --preference AskTangentAngleThreshold=0 good.json
expect 2 "unknown preference" recognize --preference Nothing=1 good.json
expect 0 "4 lines" recognize --preference AskTangentAngleThreshold=40 --preference AskSpeed2Ratio=0.4 good.json
expect 0 "4 lines" recognize --preference AskTangentAngleThreshold=40 good.json -o -
expect 2 "--ink-scale takes auto or a number above 0" recognize --ink-scale 0 good.json
expect 2 "--ink-scale takes auto or a number above 0" recognize --ink-scale nan good.json
expect 0 "line" recognize --ink-scale 0.5 good.json
expect 0 "0..4" recognize --rules-only --ink-scale 1 good.json
expect 0 "4 lines" recognize --rules-only good.json

# What interpretation tells of a stroke, and what was meant by the drawing.
expect 0 "stroke 0 (5 points): rectangle" recognize good.json
expect 0 "constraints: 4 coincident, 2 horizontal, 2 vertical" recognize good.json
expect 0 '"shape":"rectangle","joints":[{"before":0,"after":1,"ends":["end","start"],"kind":"corner","position":[100.0,0.0],"turn":1.57' recognize --to json good.json
check grep -q '"start":\[100.0,0.0\],"end":\[100.0,80.0\]' out.txt
check grep -q '"connections":\[\]' out.txt
check grep -q '"constraints":\[{"kind":"coincident","curves":\[\[0,0,"start"\],\[0,3,"end"\]\],"confidence":1.0}' out.txt
expect 0 '"constraints":[{"kind":"horizontal","curves":[[0,0]],"confidence":1.0},' recognize --to json --constraints horizontal good.json
expect 0 '"joints"' recognize --to json --no-constraints good.json
check test "$(grep -c constraints out.txt)" -eq 0
expect 0 '"curves"' recognize --to json --rules-only good.json
check test "$(grep -cE 'shape|joints|constraints' out.txt)" -eq 0
expect 2 'not "slanted"' recognize --constraints slanted good.json
expect 2 "excludes" recognize --constraints all --no-constraints good.json
expect 2 "excludes" recognize --constraints all --rules-only good.json
expect 0 '<path class="vertical" transform="translate(' recognize --to svg good.json
expect 0 '<svg' recognize --to svg --no-glyphs good.json
check test "$(grep -c vertical out.txt)" -eq 0
# A line that begins at the middle of another.
echo '{"id":"t","strokes":[[[0,0],[50,0],[100,0]],[[50,1],[50,40],[50,80]]]}' >tee.json
expect 0 '"connections":[{"curve":0,"end":"start","onto":[0,0,"mid"],"position":[50.0,0.0]}]' recognize --to json tee.json

# Two lines, the first of them scratched out: strokes 0 to 2.
echo '{"id":"s","strokes":[[[0,20],[100,20]],[[0,80],[100,80]],
    [[0,10],[20,30],[24,8],[44,32],[48,9],[68,31],[72,8],[92,30],[98,10]]]}' | tr -d '\n' >scratched.json
expect 0 "stroke 2: scribble, 7 cusps, erases from stroke 0" scribble scratched.json
expect 0 "3 strokes, 1 scribble" scribble scratched.json
expect 0 '{"index":2,"points":9,"scribble":true,"cusps":7,"erases":[0]}' scribble --to json scratched.json
expect 0 '{"index":1,"points":2,"scribble":false,"cusps":0,"erases":[]}' scribble --to json scratched.json
expect 0 "no scribble" scribble --preference GetMinNumCusps=9 scratched.json
expect 0 '"erased_by":2' recognize --to json scratched.json
expect 0 "s: 3 strokes, 1 line" recognize scratched.json
expect 0 '"shape":"scribble"' recognize --to json scratched.json
expect 0 "stroke 2 (9 points): polyline" recognize --no-scribble scratched.json
expect 2 "--no-scribble" scribble --no-scribble scratched.json
expect 0 'class="scribbles"' recognize --to svg scratched.json
expect 0 "stroke 5: scribble, 6 cusps, erases from stroke 3" scribble "$examples/correction.json"

# Into a host's document.
expect 0 '{"id":"in","strokes":[{"index":0,"points":5,"code":"0x00000000","outcome":"rectangle","shape":"rectangle","elements":[1,2,3,4],"constraints":[5,6,7,8,9,10,11,12]}],"elements":[{"id":1,"kind":"line","start":[0.0,0.0],"end":[100.0,0.0]}' convert good.json
check grep -q '"constraints":\[{"id":5,"kind":"coincident","elements":\[\[1,"start"\],\[4,"end"\]\],"confidence":1.0}' out.txt
expect 0 "stroke 0 (5 points): rectangle, makes elements 1, 2, 3, 4, 8 constraints" convert --to summary good.json
expect 0 "constraints: none" convert --to summary --no-constraints good.json
expect 0 "constraints: 2 horizontal" convert --to summary --constraints horizontal good.json
expect 0 "stroke 2 (9 points): scribble, erases element 1" convert --to summary scratched.json
expect 0 "stroke 2 (9 points): polyline" convert --to summary --no-scribble scratched.json
expect 0 "" convert --to summary "$examples/correction.json"
check grep -q 'stroke 5 (196 points): scribble, trims element 15$' out.txt
expect 0 "" convert --preference AskSnapping=false good.json -o document.json
check grep -q '"elements":\[{"id":1' document.json
echo '{"strokes":[[[0,0],[9,9]],[[0,0,5],[5,5,3]]]}' >late.json
expect 1 "tessera: late.json: stroke 1: FFMGEOM::InkToModel failed with 0x80070057 (FFMGEOM.cpp:" convert late.json
check grep -q '{"index":1,"points":2,"code":"0x80070057","error":"FFMGEOM' out.txt
expect 1 "1 line" convert --quiet --to summary late.json
check test ! -s err.txt
expect 1 '"error":"line 2: ' convert lines.ndjson
expect 2 "tessera: nan.csv: line 2: " convert nan.csv
expect 2 "--tolerance-zone takes a number above 0" convert --tolerance-zone 0 good.json
expect 2 "--rules-only" convert --rules-only good.json

expect 0 '>100</text>' recognize --to svg --dimension length,angular good.json
expect 0 '"dimensions":[{"kind":"linear","value":80.0,' recognize --to json --dimension linear --dimension linear good.json
expect 2 'not ""' recognize --dimension length, good.json
expect 2 'not "width"' recognize --dimension length,width good.json
expect 0 "" recognize -o picture.svg good.json
check grep -q '<line x1=' picture.svg
expect 2 "cannot be written" recognize -o no/such/place.svg good.json
expect 0 "" recognize -o pictures/ good.json "$examples"/*.inkml "$examples"/*.csv
check test "$(ls pictures | wc -l)" -eq 3
expect 0 "curves" recognize -o - --to json "$examples/bracket.inkml"
# The outline with its two fillets, the slot, three holes and the wave; nothing strays by a hundredth of the part.
expect 0 "bracket: 6 strokes, 6 lines, 5 arcs, 3 circles, 1 spline" recognize "$examples/bracket.inkml"
check test "$(sed -n 's/.*deviation //p' out.txt | awk '$1 > 2.7' | wc -l)" -eq 0

# A million points are simply read and recognised.
awk 'BEGIN { for (i = 0; i < 1000000; ++i) print 500 * cos(i / 1e6 * 6.2831853) "," 500 * sin(i / 1e6 * 6.2831853) }' >million.csv
expect 0 "1 circle" recognize million.csv

exit $((failures > 0))
