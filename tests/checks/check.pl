#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# check.pl RULE ROOT: holds the sources under ROOT against one rule of the project, prints
# what breaks it as FILE:LINE: TEXT, and exits 1 if anything does.
use strict;
use warnings;
use utf8;

my ($rule, $root) = @ARGV;
my $broken = 0;
my $looked_at = 0;

sub complain {
    my ($file, $line, $text) = @_;
    print "$file:$line: $text\n";
    $broken++;
}

# The files of the project: what is tracked or, outside a repository, what is there.
sub files {
    my ($pattern) = @_;
    my @all = -e "$root/.git"
        ? split(/\0/, `git -C '$root' ls-files -z`)
        : map { s{^\Q$root\E/}{}r } split(/\0/, `find '$root' -name build -prune -o -type f -print0`);
    my @found = grep { m{$pattern} && -f "$root/$_" } sort @all;
    $looked_at += @found;
    return @found;
}

sub lines_of {
    my ($file) = @_;
    open(my $in, '<:encoding(UTF-8)', "$root/$file") or die "$file: $!\n";
    my @lines = <$in>;
    return @lines;
}

# --- arrows: an include points down, and only where the table lets it ---------------

my @contract = qw(contract contract/codec contract/messages);
my @patches = (@contract, qw(store/visdata store/access store/patches));
my @clients = (@patches, 'store/clients');
my %below = (
    'contract'          => ['contract/codec'],
    'contract/codec'    => ['contract'],
    'contract/messages' => ['contract'],
    'trace'         => ['contract'],
    'platform'      => ['contract', 'trace'],
    'store/visdata' => ['trace', @contract],
    'store/access'  => ['trace', 'platform', @contract],
    'store/patches' => ['trace', @patches],
    'store/clients' => ['trace', @clients],
    'proxy'         => [],
    'monitor'       => ['trace', 'platform', 'proxy'],
    'api'           => ['trace', 'platform', 'monitor', @contract, 'store/visdata', 'store/access', 'store/clients'],
    'server'        => ['trace', 'platform', 'proxy', 'monitor', @clients, 'api'],
);

# The tools: their own modules, and of src/ what is contract, the field tables and the one way
# to the store's mutex. Never the rest of the library's code, for a tool is a client like any
# other.
my @shared_tools = qw(base process registry settings);
my %below_of_tools = (
    'base'     => [],
    'process'  => ['base'],
    'registry' => ['base', 'process'],
    'settings' => ['base', 'process', 'registry'],
    'kora4ctl' => \@shared_tools,
    'kora4sim' => \@shared_tools,
);
my $tables_for_tools = join '|', qw(
    contract/([a-z]+/)?[^/]+ store/patches/field_(tables|def) store/access/named_mutex
    platform/(handles|open_mutex) api/patch_limits trace/trace);

sub module_of {
    my ($path) = @_;
    return $path =~ m{^((?:store|contract)/[^/]+|[^/]+)/} && exists $below{$1} ? $1 : undef;
}

sub tool_module_of {
    my ($path) = @_;
    return $path =~ m{^([^/]+)/} && exists $below_of_tools{$1} ? $1 : undef;
}

sub arrows {
    my %contract;
    $contract{s{^.*/}{}r =~ s{\.idl$}{.h}r} = 1 for files('^(sdk/include|idl)/[^/]+\.(h|idl)$');
    for my $file (files('^src/.*\.(h|c|cpp)$')) {
        my $module = module_of($file =~ s{^src/}{}r);
        complain($file, 1, 'stands in no module'), next unless $module;
        my $number = 0;
        for (lines_of($file)) {
            $number++;
            next unless /^\s*#\s*include\s*"([^"]+)"/;
            my ($target, $to) = ($1, module_of($1));
            if ($to) {
                complain($file, $number, "$module must not include $to ($target)")
                    unless $to eq $module || grep { $_ eq $to } @{$below{$module}};
            } elsif (!$contract{$target} && !-f "$root/idl/$target") {
                complain($file, $number, "\"$target\" is neither rooted at src/ nor a contract header");
            }
        }
    }
    arrows_of_tools(\%contract);
}

sub arrows_of_tools {
    my ($contract) = @_;
    for my $file (files('^tools/.*\.(h|c|cpp)$')) {
        my $module = tool_module_of($file =~ s{^tools/}{}r);
        complain($file, 1, 'stands in no module of the tools'), next unless $module;
        my $number = 0;
        for (lines_of($file)) {
            $number++;
            next unless /^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+\/[^>]+)>)/;
            my $quoted = defined $1;
            my $target = $quoted ? $1 : $2;
            my $to = tool_module_of($target);
            if ($to) {
                complain($file, $number, "$module must not include $to ($target)")
                    unless $to eq $module || grep { $_ eq $to } @{$below_of_tools{$module}};
            } elsif (module_of($target)) {
                complain($file, $number, "a tool includes tables of src/ only, not \"$target\"")
                    unless $target =~ m{^(?:$tables_for_tools)\.h$};
            } elsif ($quoted && !$contract->{$target}) {
                complain($file, $number, "\"$target\" is neither rooted at tools/ nor a table of src/");
            }
        }
    }
}

# --- pure: the platform-free files need the standard library only ------------------------

sub is_pure {
    my ($file) = @_;
    return $file =~ m{^src/(trace/trace\.h$|platform/thread_annotations\.h$|contract/)}
        || ($file =~ m{^src/store/}
            && $file !~ m{^src/store/access/(reg_prop_keys_access\.|(named_mutex|task_memory)\.cpp$)});
}

sub pure {
    for my $file (grep { is_pure($_) } files('^src/.*\.(h|cpp)$')) {
        my $number = 0;
        for (lines_of($file)) {
            $number++;
            complain($file, $number, "a platform header in a platform-free file: <$1>")
                if /^\s*#\s*include\s*<([^>]*\.h|[^>]*\/[^>]*)>/;
            complain($file, $number, "a platform-free file includes one that is not: \"$1\"")
                if /^\s*#\s*include\s*"([^"]+)"/ && -f "$root/src/$1" && !is_pure("src/$1");
        }
    }
}

# --- lines: a file can be read in one sitting ---------------------------------------------

sub lines {
    for my $file (files('\.(h|hpp|c|cpp|idl|rc|rgs|def|cmake|sh|pl)$|CMakeLists\.txt$')) {
        my @lines = lines_of($file);
        complain($file, 601, scalar(@lines) . ' lines; 600 are allowed') if @lines > 600;
    }
}

# --- literals: a GUID, a name, a table of numbers stands in one place ----------------------

# Texts that are too short or too plain to be a name of anything.
sub is_plain {
    my ($text) = @_;
    return length($text) < 5 || $text !~ /[A-Za-z0-9]/;
}

my %places;

sub note {
    my ($kind, $what, $file, $line) = @_;
    push @{$places{"$kind $what"}}, [$file, $line];
}

sub guids_in {
    my ($text, $at) = @_;
    my $h = '[0-9A-Fa-f]';
    while ($text =~ /\b($h{8})-($h{4})-($h{4})-($h{4})-($h{12})\b/g) {
        note('GUID', uc("$1$2$3$4$5"), $at->(pos $text));
    }
    my $sep = '[\s,{}]*';
    my $byte = "${sep}0x($h\{1,2})\\b";
    while ($text =~ /\b0x($h{5,8})${sep}0x($h{1,4})${sep}0x($h{1,4})$byte$byte$byte$byte$byte$byte$byte$byte/g) {
        my @bytes = map { substr("0$_", -2) } ($4, $5, $6, $7, $8, $9, $10, $11);
        note('GUID', uc(sprintf('%08s%04s%04s', $1, $2, $3) =~ tr/ /0/r . join('', @bytes)), $at->(pos $text));
    }
}

sub literals_in {
    my ($text, $at) = @_;
    while ($text =~ /\b(?:L|u)"((?:[^"\\]|\\.)+)"/g) {
        note('text', $1, $at->(pos $text)) unless is_plain($1);
    }
    my $item = '-?(?:0[xX][0-9A-Fa-f]+|\d+(?:\.\d*)?)[uUfFlL]*';
    while ($text =~ /($item(?:\s*,\s*$item){3,})/g) {
        my @items = map { s/[uUfFlL]+$//r } split(/\s*,\s*/, $1);
        my %different = map { $_ => 1 } @items;
        note('table', join(', ', @items), $at->(pos $text)) if keys %different > 1;
    }
    while ($text =~ /"((?:[0-9a-f]{4},){3,}[0-9a-f]{4},?)"/g) {
        note('array', $1, $at->(pos $text));
    }
}

sub literals {
    for my $file (files('^(src|idl|sdk|tools)/.*\.(h|hpp|c|cpp|idl|rc|rgs|in|def)$')) {
        my $text = join('', lines_of($file));
        # Comments go, their line ends stay.
        $text =~ s{("(?:[^"\\\n]|\\.)*")|//[^\n]*|(/\*.*?\*/)}
                  {defined $1 ? $1 : defined $2 ? $2 =~ tr/\n//cdr : ''}gse;
        my $at = sub { ($file, 1 + (substr($text, 0, $_[0]) =~ tr/\n//)) };
        guids_in($text, $at);
        literals_in($text, $at) if $file =~ m{^(src|tools)/};
    }
    for my $what (sort keys %places) {
        my @where = @{$places{$what}};
        next if @where < 2;
        my $first = "$where[0][0]:$where[0][1]";
        complain($_->[0], $_->[1], "a second copy of the $what, which stands at $first")
            for @where[1 .. $#where];
    }
}

# --- words: nothing unfinished, and nothing that a reader of the repository cannot follow --

my %unwanted = (
    'an unfinished mark'             => '\b(TO[D]O|FI[X]ME|X[X]X|HA[C]K)\b',
    'a skipped test'                 => 'GTEST_SK[I]P',
    'a path of somebody\'s machine'  => '(?<![A-Za-z0-9_.$}])/(wor[k]|hom[e]|tm[p]|roo[t])/',
    'a reference to no known document' =>
        '\b[Ss]pe[c](ification)?s?\b|\b[Pp]art[s]? \d\.\d|\bas spe[c]ified\b|\b[Ii]ssu[e] #?\d|\.\./sha[r]ed',
);

sub words {
    for my $file (files('.')) {
        next if -B "$root/$file" && -s "$root/$file";
        my $number = 0;
        for my $line (lines_of($file)) {
            $number++;
            for my $what (sort keys %unwanted) {
                complain($file, $number, "$what: $&") if $line =~ /$unwanted{$what}/;
            }
        }
    }
}

my %rules = (
    arrows => \&arrows, pure => \&pure, lines => \&lines, literals => \&literals, words => \&words,
);
die "usage: check.pl @{[join '|', sort keys %rules]} ROOT\n"
    unless defined $rule && $rules{$rule} && defined $root && -d $root;
$rules{$rule}->();
# A rule that saw nothing has shown nothing.
die "$rule: no file to look at under $root\n" unless $looked_at;
print "$rule: $looked_at files, $broken findings\n";
exit($broken ? 1 : 0);
