#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# blocks.pl ROOT [WORK INCLUDES...]: every fenced block of every document is checked by something.
# Prints what is not as FILE:LINE: TEXT, and exits 1 if anything is printed or there is nothing to
# look at. With folders of INCLUDES it also compiles, in WORK, the blocks that say so.
#
#   c, cpp    follows the name of the file that it is a part of, which is built; the words are
#             compared by native.documents_test. Or it follows <!-- compiled --> and is the body
#             of a function that compiles with the public headers
#   xml       follows the name of its file, too
#   console   stands in a document that scripts/manuals.sh runs
#   shape     the same
#   sh        each line: the command exists, and its options are known to its help
#   cmake     each command exists
#   json      can be parsed
#   text      what a program prints, a diagram, a piece of a file: nothing to run
use strict;
use warnings;
use JSON::PP;

my ($root, $work, @includes) = @ARGV;
my ($findings, $blocks, $compiled) = (0, 0, 0);

sub complain {
    my ($place, $text) = @_;
    print "$place: $text\n";
    $findings++;
}

sub contents {
    my ($file) = @_;
    open(my $in, '<:encoding(UTF-8)', "$root/$file") or return '';
    local $/;
    return scalar <$in>;
}

sub output_of { my ($command) = @_; return scalar `$command 2>&1 </dev/null` // '' }

# --- sh --------------------------------------------------------------------------------------

# Commands of Windows, which have no --help here.
my %is_of_windows = map { $_ => 1 } qw(regsvr32 icacls reg);
my %is_of_the_shell = map { $_ => 1 } qw(cd export alias source echo);

# A manual says what the --help of its program does: wine.manuals_test compares the two.
sub manual_of {
    my ($program, $verb) = @_;
    my $manual = contents("docs/$program.md");
    return $manual if $program eq 'kora4sim' || !defined $verb;
    my ($common) = $manual =~ /^(## Options of every verb\n.*?)(?=^## )/ms;
    my ($section) = $manual =~ /^(## `\Q$verb\E`\n.*?)(?=^## |\z)/ms;
    return defined $section ? ($common // '') . $section : undef;
}

# Scripts that hand their options on, and to what.
my %program_of = map { m{([^/.]+)\.\w+$} ? ("$1.exe" => 1) : () } glob("'$root'/sdk/samples/*");
my %hands_on_to = ('scripts/test.sh' => 'ctest', 'scripts/coverage.sh' => 'ctest',
                   'scripts/wine-run.sh' => '');

# What says which options a command has: undef if there is no such command.
sub help_of {
    my ($command, @words) = @_;
    if ($command =~ m{^(\./)?(scripts/|\.ci/)}) {
        return undef unless -x "$root/$command";
        my $next = $hands_on_to{$command};
        return $next ? output_of("$next --help") : contents($command);
    }
    return manual_of($command, grep { !/^-/ } @words) if $command =~ /^kora4(ctl|sim)$/;
    return '' if $is_of_windows{$command} || $is_of_the_shell{$command};
    return undef unless output_of("command -v '$command'");
    return output_of("$command --help");
}

sub words_of {
    my ($line) = @_;
    my @words;
    push @words, $1 // $2 // $3 while $line =~ /\G\s*(?:"([^"]*)"|'([^']*)'|(\S+))/gc;
    return @words;
}

# The lines that build the samples, which the tests of the samples and of the package run.
my $samples;
sub builds_a_sample {
    my ($line) = @_;
    $samples //= join("\n", map { contents($_ =~ s{^\Q$root\E/}{}r) }
                      glob("'$root'/sdk/samples/* '$root'/tests/package/*"));
    return index($samples, $line) >= 0;
}

sub check_command {
    my ($place, $line) = @_;
    # At a prompt of Windows programs lie in bin\.
    $line =~ s/^bin\\//;
    my ($command, @words) = words_of($line);
    return if !defined $command || $program_of{$command};
    if ($command =~ /-w64-mingw32-/) {
        complain($place, "no sample is built by: $line") unless builds_a_sample($line);
        return;
    }
    my $help = help_of($command, @words);
    complain($place, "there is no " . join(' ', $command, $words[0] // ())), return
        unless defined $help;
    # Options of commands without a help here, and of programs that a command runs.
    return if $help eq '' || ($hands_on_to{$command} // 'none') eq '';
    for my $option (map { s/=.*//r =~ s/^-D\w+/-D/r } grep { /^--?[A-Za-z]/ } @words) {
        complain($place, "$command has no $option") unless $help =~ /(?<![\w-])\Q$option\E(?![\w-])/;
    }
}

# What a switch of the trace is called.
sub check_categories {
    my ($place, $line) = @_;
    return unless $line =~ /kora4ctl trace on ([a-z -]+)/;
    my %is_known = (all => 1);
    $is_known{$_} = 1 for contents('src/contract/messages/trace_categories.h') =~ /\{trace::\w+, "([\w-]+)"/g;
    for my $word (grep { !/^-/ } split(' ', $1)) {
        complain($place, "the trace has no $word") unless $is_known{$word};
    }
}

sub check_shell {
    my ($place, $text) = @_;
    $text =~ s/\\\n\s*/ /g;
    for my $line (split(/\n/, $text)) {
        $line =~ s/(^|\s)#.*//;
        check_categories($place, $line);
        $line =~ s/^\s*source <\((.*)\)/$1/;
        $line =~ s/^\s*alias \w+='(.*)'/$1/;
        check_command($place, $_) for map { s/^\s+|\s+$//gr =~ s/^eval //r } split(/\s(?:\||&&|;)\s/, $line);
    }
}

# --- the others ------------------------------------------------------------------------------

my $cmake_commands;
sub check_cmake {
    my ($place, $text) = @_;
    $cmake_commands //= output_of('cmake --help-command-list');
    $text =~ s/#.*//mg;
    my $modules = join('', map { output_of("cmake --help-module $_") } $text =~ /^\s*include\((\w+)\)/mg);
    while ($text =~ /^\s*(\w+)\s*\(/mg) {
        complain($place, "CMake has no $1")
            unless $cmake_commands =~ /^\Q$1\E$/m || $modules =~ /\b\Q$1\E\b/;
    }
}

my $manuals = contents('scripts/manuals.sh');
my %check_of = (
    'c'       => \&check_source,
    'cpp'     => \&check_source,
    'xml'     => \&check_source,
    'console' => \&check_transcript,
    'shape'   => \&check_transcript,
    'sh'      => \&check_shell,
    'cmake'   => \&check_cmake,
    'json'    => sub { complain($_[0], 'this is no JSON') unless eval { decode_json($_[1]); 1 } },
    'text'    => sub { },
);

my %compiler_of = (c => 'gcc-posix -std=c11', cpp => 'g++-posix -std=c++17');

sub check_source {
    my ($place, $text, $before, undef, $kind) = @_;
    return if $before =~ /^<!-- code: \S+ -->$/;
    complain($place, 'code without the name of its file'), return
        unless $before eq '<!-- compiled -->' && $compiler_of{$kind};
    return unless @includes;
    open(my $out, '>', "$work/block.$kind") or die "$work/block.$kind: $!\n";
    print $out qq{#include "kora4api.h"\n#include "kora4_proxies.h"\n}
        . qq{void Block(void);\nvoid Block(void)\n{\n$text}\n};
    close($out);
    my $options = join(' ', '-fsyntax-only -Wall -Wextra -Wno-unused -Werror', map { "-I '$_'" } @includes);
    my $said = output_of("x86_64-w64-mingw32-$compiler_of{$kind} $options '$work/block.$kind'");
    complain($place, "does not compile:\n$said") if $?;
    $compiled++;
}

sub check_transcript {
    my ($place, $text, $before, $file) = @_;
    complain($place, "scripts/manuals.sh does not run the transcripts of $file")
        unless $manuals =~ /(?<![\w\/])\Q$file\E(?!\w)/;
}

my @documents = map { s{^\Q$root\E/}{}r }
    split(/\0/, `find '$root' \\( -name build -o -name '.?*' \\) -prune -o -name '*.md' -type f -print0`);
for my $file (sort @documents) {
    my ($kind, $text, $before, $start) = (undef, '', '');
    my $number = 0;
    for my $line (split(/\n/, contents($file))) {
        $number++;
        if ($line =~ /^\s*```(.*)$/) {
            if (!defined $kind) {
                ($kind, $text, $start) = ($1, '', $number);
                next;
            }
            $blocks++;
            my $check = $check_of{$kind};
            $check ? $check->("$file:$start", $text, $before, $file, $kind)
                   : complain("$file:$start", "nothing checks a block of '$kind'");
            ($kind, $before) = (undef, '');
        } elsif (defined $kind) {
            $text .= "$line\n";
        } else {
            $before = $line;
        }
    }
    complain("$file:$start", 'a block without an end') if defined $kind;
}

print "blocks: $blocks in " . scalar(@documents) . " documents, $compiled compiled, $findings findings\n";
exit($findings || !$blocks || (@includes && !$compiled) ? 1 : 0);
