#!/usr/bin/env bash
# The authoring application on a site of two pages:  run_author.sh WORK_FOLDER PROGRAM [EMULATOR]...
set -euo pipefail
work=$1 program=$2
shift 2
rm -rf "$work"
mkdir -p "$work/site"
echo '<a href="a.htm">b</a> <a href="http://example.org/">out</a>' >"$work/site/index.htm"
echo '<a href="index.htm">home</a>' >"$work/site/a.htm"

site=$work/site/
database=$work/db/
if [ $# -gt 0 ]; then
  site=$(echo "Z:$site" | tr / '\\')
  database=$(echo "Z:$database" | tr / '\\')
fi
said=$("$@" "$program" "$site" "$database" index.htm a.htm b.htm | tr -d '\r')
shown=$(echo "$site" | tr / '\\')
diff -u - <(echo "$said") <<END
saving the top page; its links:
  ${shown}a.htm
  http://example.org/
rebuilding:
  reading folders
  reading folders
  reading links
  links are read
rebuilt; the bar stands at 100
renaming a page:
  ${shown}index.htm: 1 to change
  in the editor, line 1: a.htm becomes b.htm
renamed; the links of the top page:
  ${shown}b.htm
  http://example.org/
END
diff - "$work/site/index.htm" <<END
<a href="b.htm">b</a> <a href="http://example.org/">out</a>
END
