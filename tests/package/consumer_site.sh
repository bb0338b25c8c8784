# Sourced by the scripts that run tests/consumer: the site of its application, and its answer.

# make_consumer_site FOLDER: makes FOLDER/site, and FOLDER/empty for the other program.
make_consumer_site() {
  mkdir -p "$1/site" "$1/empty"
  printf '<title>Home</title><a href="a.htm">first page</a><img src="no.gif">' >"$1/site/index.htm"
  printf '<a href="index.htm#top">home</a> <a href="mailto:ann@example.org">Ann</a>' >"$1/site/a.htm"
}

# A path of Windows is written as there.
native() {
  case $1 in
    ?:*) echo "$1" | tr / '\\' ;;
    *) echo "$1" ;;
  esac
}

# run_consumer FOLDER DATABASE PROGRAM...: runs it twice; the site is made once, and then there.
run_consumer() {
  local folder=$1 database=$2 time
  shift 2
  for time in first second; do
    diff <("$@" "$(native "$folder/site")" "$(native "$folder/$database")" | tr -d '\r') - <<'END' ||
to a.htm: LT_ANCHOR
to no.gif: LT_IMG, missing
1 file missing
END
      { echo "wrong answer the $time time: $*" && exit 1; }
  done
}
