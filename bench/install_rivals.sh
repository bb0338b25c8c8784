#!/bin/bash
# Installs the link checkers that bench/site.sh compares with. Each is optional: the script leaves
# out what is missing. Run as root for the Debian packages.
#
# usage: install_rivals.sh [NPM_PREFIX]    npm programs go below NPM_PREFIX (default ~/.local)
set -u
prefix=${1:-$HOME/.local}

for package in linklint wget; do
  command -v "$package" > /dev/null || apt-get install -y --no-install-recommends "$package" ||
    echo "install_rivals: no $package" >&2
done
if command -v npm > /dev/null; then
  npm install --global --prefix "$prefix" --no-audit --no-fund linkinator ||
    echo "install_rivals: no linkinator" >&2
else
  echo "install_rivals: no npm, so no linkinator" >&2
fi
echo "put $prefix/bin on the PATH; hyperlink and htmltest are used too when they are there"
