#!/usr/bin/env perl
# SPDX-License-Identifier: MIT
# mutants.pl ROOT FILE...: every small fault that a test should notice if it stood in one of the
# files, one a line: file, line (from 0), column and length of what is replaced, what replaces it, and
# a name for the fault, which no other has; separated by tabs. Comments, texts, preprocessor lines and
# static assertions are left alone.
use strict;
use warnings;

my %operators = (
    '==' => '!=', '!=' => '==', '<'  => '<=', '<=' => '<', '>' => '>=', '>=' => '>',
    '&&' => '||', '||' => '&&', '+'  => '-',  '-'  => '+', '*' => '/',  '/'  => '*',
    '%'  => '*',  '<<' => '>>', '>>' => '<<', '&'  => '|', '|' => '&',
);
my %words = (
    true => 'false', false => 'true', TRUE => 'FALSE', FALSE => 'TRUE',
    S_OK => 'E_FAIL', S_FALSE => 'S_OK', E_FAIL => 'S_OK', E_INVALIDARG => 'S_OK',
);

# The text with comments, texts and characters blanked out; positions stay.
sub code_of {
    my ($text) = @_;
    my $blank = sub { my $part = shift; $part =~ s/[^\n]/ /g; return $part; };
    $text =~ s{(//[^\n]*|/\*.*?\*/|R"\((?:.*?)\)"|"(?:\\.|[^"\\\n])*"|(?<![0-9a-fA-F])'(?:\\.|[^'\\\n])*')}
              {$blank->($1)}gse;
    return $text;
}

sub one_more {
    my ($number) = @_;
    return $number =~ /^0x/ ? sprintf('0x%x', hex($number) + 1) : $number + 1;
}

# The changes of a line: column, length, replacement.
sub changes {
    my ($line) = @_;
    my @changes;
    push @changes, [$-[1], length $1, $operators{$1}]
        while $line =~ m{(?<= )(==|!=|<=|>=|&&|\|\||<<|>>|[-<>+*/%&|])(?= |$)}g;
    push @changes, [$-[0], 1, ''] while $line =~ /!(?=[A-Za-z_(:])/g;
    # A condition without an operator.
    push @changes, [$-[1], 0, '!'] while $line =~ /\bif \(()\w[^ !]*\)(?:$| \{)/g;
    push @changes, [$-[1], length $1, $1 + 1 . '.0'] while $line =~ /(?<![\w.'])(\d+\.\d+)(?=f?\b)/g;
    push @changes, [$-[1], length $1, one_more($1)]
        while $line =~ /(?<![\w.'])(0x[0-9a-fA-F]+|\d+)(?=u?\b)(?![.'])/g;
    while ($line =~ /\b(\w+)\b/g) {
        push @changes, [$-[1], length $1, $words{$1}] if exists $words{$1};
    }
    return @changes;
}

my $root = shift @ARGV;
for my $file (@ARGV) {
    open my $in, '<', "$root/$file" or die "$file: $!\n";
    my $text = do { local $/; <$in> };
    my @lines = split /\n/, $text;
    my @code = split /\n/, code_of($text);
    my ($asserts, %count) = (0);
    for my $i (0 .. $#code) {
        $asserts = 1 if $code[$i] =~ /\bstatic_assert\b/;
        my $skip = $asserts || $code[$i] =~ /^\s*#/;
        $asserts = 0 if $code[$i] =~ /;\s*$/;
        next if $skip;
        for my $change (changes($code[$i])) {
            my ($column, $length, $new) = @$change;
            my $name = $lines[$i];
            substr($name, $column, $length) = '[' . substr($name, $column, $length) . " -> $new]";
            $name =~ s/^\s+//;
            # Of equal lines the second and later ones have a number.
            my $number = ++$count{$name};
            $name .= " ($number)" if $number > 1;
            print join("\t", $file, $i, $column, $length, $new, "$file: $name"), "\n";
        }
    }
}
