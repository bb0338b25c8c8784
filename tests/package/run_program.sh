#!/usr/bin/env bash
# The program on a site whose names are in code page 932, where the last byte of one character is
# that of the separator:  run_program.sh WORK_FOLDER PROGRAM EMULATOR...
set -euo pipefail
work=$1 program=$2
shift 2
rm -rf "$work"
mkdir -p "$work/表"
cd "$work"
printf '<title>表紙</title><a href="予定.htm">plan</a><a href="no.htm">' | iconv -t cp932 >表/index.htm
printf '<title>表</title><img src="表/no.gif">' | iconv -t cp932 >表/予定.htm

run() { "$@" 2>&1 | tr -d '\r' | iconv -f cp932 | sed 's/ in [0-9.]* s$//'; }
zvrsit() { run "${emulator[@]}" "$program" --db db "$@"; }
emulator=("$@")
native=$(printf 'Z:%s' "$work" | tr / '\\')

# Compares the answers of the program, all of its lines, with the text on stdin.
expect() { diff -u - <("$@" || true) || { echo "wrong answer: $*" && exit 1; }; }

expect zvrsit add 図表 表 --top 表/予定.htm <<END
name              図表
folder            $native\\表\\
top               $native\\表\\予定.htm
rules             web
state             to be rebuilt
END
expect zvrsit rebuild 図表 <<END
2 files, 2 pages, 0 style sheets, 3 links, 0 external URLs
END
expect zvrsit links 図表 --from 表/INDEX.htm <<'END'
index.htm -> 予定.htm  LT_ANCHOR
index.htm -> no.htm  LT_ANCHOR  missing
END
expect zvrsit broken 図表 <<'END'
表\index.htm:1:52: error: no.htm is not there [missing-file]
表\予定.htm:1:27: error: 表\no.gif is not there (表/no.gif) [missing-file]
2 errors in 2 places; 2 pages, 0 style sheets and 3 links looked at
END
expect zvrsit save 図表 予定.htm </dev/null
expect zvrsit sites <<END
図表  $native\\表\\  web  rebuilt
END
expect zvrsit links 図表 --from 無.htm <<'END'
zvrsit: 無.htm: the site knows no such file
END
expect zvrsit links 図表 --from é.htm <<'END'
zvrsit: an argument holds a character that the code page of the system lacks
END
# JSON is UTF-8 on every system.
"${emulator[@]}" "$program" --db db files 図表 --format json | tr -d '\r' | grep -q '"title":"表紙"'
echo "all answers are right"
