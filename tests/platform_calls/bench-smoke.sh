#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# bench-smoke.sh POOL FOLDER PROGRAM REPORT: a short run of the benchmark under Wine. It must
# bring a figure for everything that it measures; what the figures are is not looked at.
set -euo pipefail
pool=$1 folder=$2 program=$3 report=$4

rm -f smoke.json report.json
"$pool" run "$folder" "$program" --smoke --out smoke.json
perl "$report" --json report.json smoke.json

perl -MJSON::PP -e '
  local $/;
  my $report = decode_json(<>);
  my (%rows, @bad);
  for my $row (@{$report->{rows}}) {
    $rows{$row->{group}}++;
    my $figure = $row->{value} // $row->{call};
    my $none = $row->{group} =~ /^(idling|size and private memory)$/;
    push @bad, "$row->{group}: $row->{name} has no figure"
      unless defined $figure && ($figure > 0 || $none && $figure >= 0);
  }
  for my $group ("methods", "methods, default trace", "life", "foreign write to callback",
                 "watching objects, per change", "client processes, slider reads",
                 "beside an INI file", "idling", "size and private memory") {
    printf "%3d rows of %s\n", $rows{$group} // 0, $group;
    push @bad, "nothing was measured of $group" unless $rows{$group};
  }
  # What is measured here has a verdict, what is measured natively has none.
  for my $verdict (@{$report->{budgets}}) {
    my $native = $verdict->{budget} =~ /, us$/;
    push @bad, "$verdict->{budget}: $verdict->{verdict}"
      if $native != ($verdict->{verdict} eq "not measured");
  }
  print "$_\n" for @bad;
  exit(@bad ? 1 : 0);
' report.json
