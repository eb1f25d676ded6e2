#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# bench-smoke.sh REPORT wine|native COMMAND...: a short run of a benchmark program. It must
# bring a figure for everything that it measures; what the figures are is not looked at.
set -euo pipefail
report=$1 kind=$2
shift 2

rm -f smoke.json report.json
case $kind in
  wine) "$@" --smoke --out smoke.json ;;
  native) "$@" --benchmark_min_time=0.001 --benchmark_out=smoke.json --benchmark_out_format=json ;;
esac
perl "$report" --json report.json smoke.json

perl -MJSON::PP -e '
  my %groups = (
    native => ["own processor time"],
    wine => ["methods", "methods, default trace", "lifetime", "foreign write to callback",
             "watching objects, per change", "client processes, slider reads",
             "beside an INI file", "idle", "size and private memory"],
  );
  my $kind = shift;
  local $/;
  my $report = decode_json(<>);
  my (%rows, @bad);
  for my $row (@{$report->{rows}}) {
    $rows{$row->{group}}++;
    my $figure = $row->{value} // $row->{call};
    my $none = $row->{group} =~ /^(idle|size and private memory)$/;
    push @bad, "$row->{group}: $row->{name} has no figure"
      unless defined $figure && ($figure > 0 || $none && $figure >= 0);
  }
  for my $group (@{$groups{$kind}}) {
    printf "%3d rows of %s\n", $rows{$group} // 0, $group;
    push @bad, "nothing was measured of $group" unless $rows{$group};
  }
  # What is measured here has a verdict, what is measured by the other program has none.
  for my $verdict (@{$report->{budgets}}) {
    my $here = ($verdict->{budget} =~ /, us$/ ? "native" : "wine") eq $kind;
    push @bad, "$verdict->{budget}: $verdict->{verdict}"
      if $here == ($verdict->{verdict} eq "not measured");
  }
  print "$_\n" for @bad;
  exit(@bad ? 1 : 0);
' "$kind" report.json
