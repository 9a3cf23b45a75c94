#!/bin/sh
# manpage.sh PROGRAM OUTPUT.gz writes orva-host(1): help2man makes it from the program's help, and adds a section for each
# command from that command's help.
set -eu
program=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

commands=$("$program" --help | sed -n '/^Commands:/,/^$/s/^  \([a-z][a-z-]*\) .*/\1/p')
for command in $commands; do
  help2man --no-info --version-string=- --output="$work/page" "$program $command"
  printf '[%s]\n' "orva-host $command"
  sed -e '1,/^\.SH SYNOPSIS/d' -e 's/^\.SH DESCRIPTION/.PP/' -e 's/^\.SH OPTIONS/.SS "Options:"/' -e '/^\.SS "Example/,$ s/^orva/.br\n&/' "$work/page"
done >"$work/sections"
help2man --no-info --name="read motorsport telemetry logs" --include="$work/sections" --output="$work/page" "$program"
gzip -9n <"$work/page" >"$2"
