#!/bin/bash
# What a site costs as a whole, beside programs that only walk, read, scan or tokenize its pages,
# and beside other link checkers, as a table of ratios.
#
# usage: bench/site.sh FOLDER [--build BUILD] [--runs N] [--limit SECONDS] [--rivals LIST]
#
#   BUILD   a build folder configured with -DZVRSIT_BUILD_BENCH=ON (default build/release)
#   N       alternating runs, of which the medians are shown (default 5)
#   SECONDS after which a rival is stopped and reported as too slow (default 120)
#   LIST    of linklint,wget,linkinator,hyperlink,htmltest: which rivals to run (default: all that
#           are installed; bench/install_rivals.sh installs some), or "none"
set -u
exec python3 "$(dirname "$0")/site_table.py" "$@"
