#!/usr/bin/env bash
# The Debian packages on a bare Debian 12:  run_debian.sh PACKAGE.deb...
#
# In a fresh root, with what is essential and nothing else, apt installs them with what they depend
# on. Then the installed program does its main job, its manual page and completion are where they are
# looked for, and nothing stays behind when the packages go. The root is gone afterwards.
set -euo pipefail

# What is done in the new root.
try_packages() {
  export DEBIAN_FRONTEND=noninteractive
  apt-get -q install -y --no-install-recommends /opt/*.deb >/tmp/log 2>&1 || { cat /tmp/log; exit 1; }
  cd /tmp
  mkdir site
  echo '<title>Home</title><a href="two.html">2</a><img src="no.gif">' >site/index.html
  echo '<title>Two</title><a href="index.html#nowhere">1</a>' >site/two.html
  code=0
  zvrsit check site --quiet >found || code=$?
  test "$code" -eq 1
  diff - found <<'END'
site/index.html:1:54: error: no.gif is not there [missing-file]
site/two.html:1:28: error: index.html has nothing named "nowhere" [missing-fragment]
END
  zvrsit add harbour site --top site/index.html >/dev/null
  zvrsit rebuild harbour >/dev/null
  zvrsit links harbour --from site/two.html | grep -q '^two.html -> index.html'
  zcat /usr/share/man/man1/zvrsit.1.gz | grep -q '^\.TH'
  bash -n /usr/share/bash-completion/completions/zvrsit
  test -e /usr/include/zvrsit40/zvrsit40.h
  apt-get -q purge -y zvrsit libzvrsit40-dev 'libzvrsit40-*' >/dev/null 2>&1
  find / -xdev \( -path /opt -o -path /var/log -o -path /root \) -prune -o -name '*zvrsit*' -print >left
  diff /dev/null left
  echo "the packages work on a bare system, and leave nothing behind"
}

if [ "$1" = --inside ]; then
  try_packages
  exit
fi
hooks=(--customize-hook="copy-in $0 $* /opt"
  --customize-hook="chroot \"\$1\" bash /opt/${0##*/} --inside")
mmdebstrap --quiet --variant=apt --format=null "${hooks[@]}" bookworm /dev/null
