#!/usr/bin/env perl
# SPDX-License-Identifier: MIT
# unreached.pl ROOT REPORT LIST: prints each line that no test reached, by gcovr's report in JSON, with
# the reason in the list: comments, each before the lines that it is about. A line is named by its file
# and text; of equal lines the second and later ones have a number. Exits 1 if a line has no reason, or
# if one in the list was reached or does not exist; chance may decide about those whose reason begins
# with "Chance:".
use strict;
use warnings;
use JSON::PP;

sub text_of {
    my ($path) = @_;
    open my $in, '<', $path or die "$path: $!\n";
    local $/;
    return <$in>;
}

my ($root, $report, $list) = @ARGV;
my (%reason, %known);
my ($reason, $isComment) = ('', 0);
for my $line (split /\n/, text_of($list)) {
    if ($line =~ /^#\s*(.*)/) {
        $reason = $isComment ? "$reason $1" : $1;
        $isComment = 1;
    } elsif ($line =~ /\S/) {
        $reason{$line} = $reason;
        $isComment = 0;
    } else {
        ($reason, $isComment) = ('', 0);
    }
}

my $wrong = 0;
for my $file (@{decode_json(text_of($report))->{files}}) {
    my %unreached = map { $_->{line_number} => 1 }
        grep { $_->{count} == 0 && !$_->{'gcovr/noncode'} } @{$file->{lines}};
    my ($number, %count) = (0);
    for my $line (split /\n/, text_of("$root/$file->{file}")) {
        $number++;
        $line =~ s/^\s+//;
        my $name = "$file->{file}: $line";
        my $equal = ++$count{$name};
        $name .= " ($equal)" if $equal > 1;
        $known{$name} = 1 if $unreached{$number};
        next unless $unreached{$number};
        $wrong++ unless $reason{$name};
        printf "%s:%d: %s\n    %s\n", $file->{file}, $number, $line, $reason{$name} || 'NO REASON';
    }
}
for my $name (sort keys %reason) {
    next if $known{$name} || $reason{$name} =~ /^Chance:/;
    print "NOT UNREACHED $name\n";
    $wrong++;
}
exit($wrong > 0);
