#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# report.pl [OPTION...] FIGURES...: prints the figures of a run as tables and verdicts.
#
#   FIGURES            what kora4_bench wrote, and what kora4_bench_native wrote
#   --json FILE        writes all figures and verdicts there; - is standard output, instead
#                      of the tables
#   --baseline FILE    names what became worse since that earlier --json
#
# Exits 1 only when there is nothing to report.
use strict;
use warnings;
use JSON::PP;

my ($json_file, $baseline_file, @files);
while (@ARGV) {
    my $argument = shift @ARGV;
    if    ($argument eq '--json')     { $json_file = shift @ARGV; }
    elsif ($argument eq '--baseline') { $baseline_file = shift @ARGV; }
    else                              { push @files, $argument; }
}

sub read_json {
    my ($file) = @_;
    open(my $in, '<', $file) or die "report.pl: $file: $!\n";
    local $/;
    my $data = eval { decode_json(<$in>) } or die "report.pl: $file holds no figures\n";
    return $data;
}

# Google Benchmark's figures become rows like the others.
sub rows_of {
    my ($data) = @_;
    return @{$data->{rows}} if $data->{rows};
    my @all = @{$data->{benchmarks} // []};
    my @medians = grep { ($_->{aggregate_name} // '') eq 'median' } @all;
    return map {
        die "report.pl: $_->{name}: $_->{error_message}\n" if $_->{error_occurred};
        {group => 'own processor time', name => $_->{run_name} // $_->{name}, unit => 'us',
         value => $_->{cpu_time} / 1000}
    } @medians ? @medians : @all;
}

my @rows = map { rows_of(read_json($_)) } @files;
die "report.pl: there are no figures in @files\n" unless @rows;

# --- what the figures say -----------------------------------------------------------------

# A call that never leaves the process has no bare calls to be compared with.
my $bare_floor = 1;    # us

# How much more the call takes; of a rate, how much less it does.
sub ratio {
    my ($row, $percentile) = @_;
    my ($call, $bare) = $percentile ? @$row{qw(call99 bare99)} : @$row{qw(call bare)};
    return undef unless defined $call && defined $bare && $bare > 0 && $call > 0;
    return undef if $row->{unit} eq 'us' && $row->{bare} < $bare_floor;
    return $row->{unit} eq '1/s' ? $bare / $call : $call / $bare;
}

sub in_group {
    my ($group) = @_;
    return grep { $_->{group} eq $group } @rows;
}

sub value_of {
    my ($group, $name) = @_;
    my ($row) = grep { $_->{name} eq $name } in_group($group);
    return $row ? $row->{value} : undef;
}

# Every budget: its name, its limit, and what is held against it, as [name, figure] pairs.
sub ratios {
    my ($group, $percentile) = @_;
    return map { [$_->{name}, ratio($_, $percentile)] }
        grep { defined ratio($_, $percentile) } in_group($group);
}

sub values_of {
    my ($group, @names) = @_;
    return map { [$_, value_of($group, $_)] } grep { defined value_of($group, $_) } @names;
}

my $own = 'own processor time';
my $watching = 'watching objects, per change';
my @budgets = (
    ['a method, times its bare calls, median', 1.03, ratios('methods')],
    ['the same, 99th percentile', 1.15, ratios('methods', 1)],
    ['the same with the default trace word, median', 1.05, ratios('methods, default trace')],
    ['kora4.hpp, times the raw call, median', 1.02, ratios('kora4.hpp')],
    ['creation, Initialize and Release, times their bare calls', 1.05,
     grep { $_->[0] eq 'together' } ratios('lifetime')],
    ['foreign write to callback, times its bare equivalent', 1.10,
     ratios('foreign write to callback')],
    ['50 watching objects, times one', 50, map {
        my $one = value_of($watching, "1, $_");
        my $fifty = value_of($watching, "50, $_");
        $one && $fifty ? [$_, $fifty / $one] : ()
     } 'single-threaded apartment', 'multithreaded apartment'],
    ['own processor time of a hot path, us', 1, values_of($own, 'slider read',
     '40-band equalizer read', '40-band equalizer written', 'analysis that finds nothing')],
    ['value name, us', 0.02, values_of($own, 'value name')],
    ['20-element array decoded, us', 0.12, values_of($own, '20-element array decoded')],
    ['20-element array encoded, us', 0.06, values_of($own, '20-element array encoded')],
    ['suppressed trace statement, us', 0.002, values_of($own, 'suppressed trace statement')],
    ['platform calls while idle', 0, map { [$_->{name}, $_->{value}] } in_group('idle')],
    ['size of QXA64T.dll, KB', 320,
     values_of('size and private memory', 'QXA64T.dll, the file')],
);

sub figure {
    my ($number) = @_;
    my $size = abs $number;
    return sprintf($size == 0 || $size >= 1000 ? '%.0f' : $size >= 100 ? '%.1f'
        : $size >= 10 ? '%.2f' : $size >= 0.1 ? '%.3f' : '%.4f', $number);
}

my @verdicts;
for my $budget (@budgets) {
    my ($name, $limit, @held) = @$budget;
    my @missed = sort { $b->[1] <=> $a->[1] } grep { $_->[1] > $limit } @held;
    my ($worst) = sort { $b->[1] <=> $a->[1] } @held;
    push @verdicts, {
        budget => $name,
        limit => $limit,
        verdict => !@held ? 'not measured' : @missed ? 'missed' : 'met',
        worst => $worst ? $worst->[1] : undef,
        missed => [map { $_->[0] } @missed],
        said => join(', ', map { figure($_->[1]) . " ($_->[0])" } @missed ? @missed : $worst // ()),
    };
}

# --- what became worse ---------------------------------------------------------------------

# How much of a figure may be noise, by group. What is not here depends on the machine only.
my %noise = (
    'methods'                         => 0.03,
    'methods, default trace'          => 0.03,
    'kora4.hpp'                       => 0.02,
    'lifetime'                        => 0.10,
    'foreign write to callback'       => 0.08,
    'client processes, slider reads'  => 0.15,
    'beside an INI file'              => 0.15,
    'size and private memory'         => 0.10,
    'own processor time'              => 0.25,
);

sub comparable {
    my ($row) = @_;
    return undef unless exists $noise{$row->{group}};
    return exists $row->{value} ? $row->{value} : ratio($row);
}

sub worse_since {
    my ($before) = @_;
    my %old = map { ("$_->{group}: $_->{name}" => comparable($_)) } @{$before->{rows}};
    my @worse;
    for my $row (@rows) {
        my $name = "$row->{group}: $row->{name}";
        my ($new, $old) = (comparable($row), $old{$name});
        next unless defined $new && defined $old;
        push @worse, sprintf('%s: %s, was %s', $name, figure($new), figure($old))
            if $new > $old * (1 + $noise{$row->{group}});
    }
    my %met = map { ($_->{budget} => $_->{verdict} eq 'met') } @{$before->{budgets}};
    push @worse, map { "budget: $_->{budget} is missed and was met" }
        grep { $_->{verdict} eq 'missed' && $met{$_->{budget}} } @verdicts;
    return @worse;
}

# --- output -------------------------------------------------------------------------------

sub print_group {
    my ($group) = @_;
    my @of = in_group($group);
    if (exists $of[0]{value}) {
        print "\n$group\n";
        printf "  %-44s %10s %s\n", $_->{name}, figure($_->{value}), $_->{unit} for @of;
        return;
    }
    my $percentiles = exists $of[0]{call99};
    printf "\n%-46s %10s %10s %7s%s\n", "$group, $of[0]{unit}", 'call', 'bare', 'ratio',
        $percentiles ? sprintf('  |%10s %10s %7s', 'call 99 %', 'bare 99 %', 'ratio') : '';
    for my $row (@of) {
        my $cells = sub {
            my ($call, $bare, $ratio) = @_;
            return sprintf '%10s %10s %7s', figure($call), figure($bare),
                defined $ratio ? sprintf('%.3f', $ratio) : '-';
        };
        printf "  %-44s %s%s\n", $row->{name}, $cells->(@$row{qw(call bare)}, ratio($row)),
            defined $row->{call99} ? '  |' . $cells->(@$row{qw(call99 bare99)}, ratio($row, 1)) : '';
    }
}

sub print_all {
    my %seen;
    print_group($_) for grep { !$seen{$_}++ } map { $_->{group} } @rows;
    print "\nbudgets\n";
    printf "  %-12s  %s: at most %s: %s\n", $_->{verdict}, $_->{budget}, $_->{limit},
        $_->{said} for @verdicts;
    return unless $baseline_file;
    my @worse = worse_since(read_json($baseline_file));
    print @worse ? "\nworse than the baseline\n" : "\nnothing is worse than the baseline\n";
    print "  $_\n" for @worse;
}

my $json = JSON::PP->new->canonical->pretty->encode({rows => \@rows, budgets => \@verdicts});
if (defined $json_file && $json_file ne '-') {
    open(my $out, '>', $json_file) or die "report.pl: $json_file: $!\n";
    print $out $json;
    close($out) or die "report.pl: $json_file: $!\n";
}
if (defined $json_file && $json_file eq '-') {
    print $json;
} else {
    print_all();
}
