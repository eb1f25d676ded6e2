#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# check.pl RULE ROOT: checks the sources under ROOT against one rule of the project, prints each
# violation as FILE:LINE: TEXT, and exits 1 if there is any.
use strict;
use warnings;
use utf8;
use FindBin;

my ($rule, $root) = @ARGV;
my $broken = 0;
my $looked_at = 0;

sub complain {
    my ($file, $line, $text) = @_;
    print "$file:$line: $text\n";
    $broken++;
}

# The files of the project: what is tracked or, outside a repository, what is there. The inputs
# of the fuzz harnesses are bytes, not texts of the project.
sub files {
    my ($pattern) = @_;
    my @all = -e "$root/.git"
        ? split(/\0/, `git -C '$root' ls-files -z`)
        : map { s{^\Q$root\E/}{}r } split(/\0/, `find '$root' -name build -prune -o -type f -print0`);
    my @found = grep { m{$pattern} && !m{^tests/fuzz/corpus/} && -f "$root/$_" } sort @all;
    $looked_at += @found;
    return @found;
}

sub lines_of {
    my ($file) = @_;
    open(my $in, '<:encoding(UTF-8)', "$root/$file") or die "$file: $!\n";
    my @lines = <$in>;
    return @lines;
}

# The text of a source file without its comments; the line ends stay.
sub code_of {
    my ($file) = @_;
    my $text = join('', lines_of($file));
    $text =~ s{("(?:[^"\\\n]|\\.)*")|//[^\n]*|(/\*.*?\*/)}
              {defined $1 ? $1 : defined $2 ? $2 =~ tr/\n//cdr : ''}gse;
    return $text;
}

sub line_at {
    my ($text, $position) = @_;
    return 1 + (substr($text, 0, $position) =~ tr/\n//);
}

# --- headers: the licence of a file and its purpose -------------------------------------

# Files that cannot contain a comment, are compared line for line, or are the licence itself.
my $without_header = qr{(^|/)LICENSE$|\.json$|\.png$|\.rgs(\.in)?$|(^|/)(proxy_)?exports\.txt$};
my $licence = 'SPDX-License-Identifier: MIT';

sub headers {
    for my $file (grep { $_ !~ $without_header } files('.')) {
        my @lines = lines_of($file);
        my $first = @lines && $lines[0] =~ /^#!/ ? 1 : 0;
        my ($head, $purpose) = map { $lines[$_] // '' } $first, $first + 1;
        complain($file, $first + 1, "does not begin with '$licence'"), next
            unless $head =~ m{^(//|#|;|<!--|/\*|\.\\"|\@rem) \Q$licence\E( -->)?$};
        complain($file, $first + 2, 'no comment that says its purpose follows the licence')
            unless $purpose =~ m{^(//|#|;|<!--|/\*| \*|\.\\"|\@rem) .*\w};
    }
}

# --- files: a file is named after what it holds, and a folder stays small enough to take in --

# Programs and the library begin in these.
my $entry_point = qr{(^|/)(main|hot_paths|exports|module_allocation)\.cpp$|(^|/)proxy_dll\.c$|^sdk/samples/};

# Files that implement a header of another name.
my %header_of = (
    (map { ("src/api/$_" => 'api/kora4asl.h') }
        qw(commands initialization notification patch_values profiles switches visualization)),
    'src/contract/codec/float_format'       => 'contract/codec/float_text.h',
    'src/contract/codec/float_parse'        => 'contract/codec/float_text.h',
    'src/proxy/local_slots'                 => 'kaltrixveltokora4.h',
    'src/store/access/profile_key'          => 'contract/property_key.h',
    'src/store/patches/patch_set_defaults'  => 'store/patches/managed_patch_set.h',
    'sdk/proxies/kora4_proxies'             => 'kora4_proxies.h',
    'tools/kora4ctl/access/api_settings'    => 'kora4ctl/access/setting_access.h',
    'tools/kora4ctl/registration/library_file' => 'kora4ctl/registration/registration.h',
    (map { ("tools/process/completion/${_}_script" => 'process/completion/script_texts.h') }
        qw(bash fish powershell zsh)),
    'tools/settings/content'                => 'settings/schema.h',
    'tools/settings/setting_values'         => 'settings/settings_table.h',
);
my $most_files = 20;

sub files_rule {
    my %files_in;
    my $is_project = -f "$root/tests/checks/check.pl";
    for my $gone (grep { $is_project && !-f "$root/$_.cpp" && !-f "$root/$_.c" } sort keys %header_of) {
        complain('tests/checks/check.pl', 1, "there is no $gone any longer, for which it names a header");
    }
    for my $file (files('^(src|tools|panel|sdk|bench|tests|idl)/.*\.(h|hpp|c|cpp|idl)$')) {
        complain($file, 1, 'a file name has lower-case words and underscores only')
            unless $file =~ m{(^|/)[a-z][a-z0-9]*(_[a-z0-9]+)*\.\w+$};
        next unless $file =~ m{^((?:src|tools|panel|sdk|bench)(?:/.*)?)/([^/]+)\.(h|hpp|c|cpp)$};
        my ($folder, $name, $kind) = ($1, $2, $3);
        $files_in{$folder}{$name} = 1;
        next if $kind =~ /^h/ || $file =~ $entry_point;
        # Its own header, that of what it is a part of (doctor_store.cpp: doctor.h), or that of
        # its folder (verbs/eq.cpp: verbs.h).
        my @words = split(/_/, $name);
        my @names = map { join('_', @words[0 .. $_]) } reverse 0 .. $#words;
        next if -f "$root/$folder.h" || -f "$root/" . ($folder =~ s{/[^/]+$}{}r) . ".h" || grep { -f "$root/$folder/$_.h" || -f "$root/$folder/$_.hpp" } @names;
        my $header = $header_of{"$folder/$name"};
        complain($file, 1, 'there is no header with its name or the name of what it is a part of'), next
            unless $header;
        complain($file, 1, "does not include $header, which this check says it implements")
            unless grep { /^#include "\Q$header\E"/ } lines_of($file);
    }
    for my $folder (sort keys %files_in) {
        my $number = keys %{$files_in{$folder}};
        complain($folder, 1, "holds $number files (a header and its source count as one); $most_files are allowed")
            if $number > $most_files;
    }
}

# --- arrows: an include points down, and only where the table allows it; each arrow is used --

my @traced = qw(contract contract/messages trace);
my %below = (
    'contract'          => [],
    'contract/codec'    => ['contract'],
    'contract/messages' => ['contract'],
    'trace'         => ['contract', 'contract/messages'],
    'platform'      => [],
    'store/visdata' => [@traced],
    'store/access'  => [@traced, 'contract/codec', 'platform'],
    'store/patches' => ['contract', 'contract/codec', 'trace', 'store/access'],
    'store/clients' => [@traced, 'store/access', 'store/patches'],
    'proxy'         => [],
    'monitor'       => ['contract/messages', 'trace', 'platform', 'proxy'],
    'api'           => [@traced, 'platform', 'monitor', 'store/visdata', 'store/access', 'store/clients'],
    'server'        => [@traced, 'platform', 'monitor', 'api'],
);

# The tools: their own modules and, of src/, the contract, the handle types and the function that
# opens the store's mutex. Never the rest of the library: a tool is a client like any other.
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
    contract/([a-z]+/)?[^/]+
    platform/(handles|open_mutex));

sub module_of {
    my ($path) = @_;
    return $path =~ m{^((?:store|contract)/[^/]+|[^/]+)/} && exists $below{$1} ? $1 : undef;
}

sub tool_module_of {
    my ($path) = @_;
    return $path =~ m{^([^/]+)/} && exists $below_of_tools{$1} ? $1 : undef;
}

require "$FindBin::Bin/panel_arrows.pl";

my %used;    # "FROM TO" for the arrows that an include follows

sub arrows {
    my %contract;
    $contract{s{^.*/}{}r =~ s{\.idl$}{.h}r} = 1 for files('^(sdk/include|idl)/[^/]+\.(h|idl)$');
    for my $file (files('^src/.*\.(h|c|cpp)$')) {
        my $module = module_of($file =~ s{^src/}{}r);
        complain($file, 1, 'belongs to no module'), next unless $module;
        my $number = 0;
        for (lines_of($file)) {
            $number++;
            next unless /^\s*#\s*include\s*(?:"|<(?=kora4))([^">]+)/;
            my ($target, $to) = ($1, module_of($1));
            if ($to) {
                $used{"$module $to"} = 1;
                complain($file, $number, "$module must not include $to ($target)")
                    unless $to eq $module || grep { $_ eq $to } @{$below{$module}};
            } elsif (!$contract{$target} && !-f "$root/idl/$target") {
                complain($file, $number, "\"$target\" is neither rooted at src/ nor a contract header");
            }
        }
    }
    arrows_of_tools(\%contract);
    arrows_of_panel();
    arrows_of_document();
    for my $table (\%below, \%below_of_tools) {
        for my $module (sort keys %$table) {
            complain('tests/checks/check.pl', 1, "$module never includes $_, which it may")
                for grep { !$used{"$module $_"} } @{$table->{$module}};
        }
    }
}

# The tables of the document that say what a module may include, in the order of the document.
sub arrows_of_document {
    my $document = 'docs/architecture.md';
    my @tables = (\%below, \%below_of_tools);
    my ($table, $number, %seen) = (undef, 0);
    my @lines = (-f "$root/$document" ? lines_of($document) : (), "\n");
    for (@lines) {
        $number++;
        if (/^\| Module \| May include \|$/) {
            $table = shift @tables or complain($document, $number, 'a table too many');
            %seen = ();
        } elsif ($table && /^\| `([^`]+)` \| (.*) \|$/) {
            my ($module, $cell) = ($1, $2);
            $seen{$module} = 1;
            my $said = join(', ', sort $cell =~ /`([^`]+)`/g);
            my $checked = join(', ', sort grep { $_ ne $module } @{$table->{$module} // ['nothing of it']});
            complain($document, $number, "$module: it says '$said', the check says '$checked'")
                if $said ne $checked;
        } elsif ($table && !/^\|/) {
            complain($document, $number, "the table above lacks $_")
                for grep { !$seen{$_} } sort keys %$table;
            $table = undef;
        }
    }
    complain($document, $number, 'a table of what a module may include is missing') for @tables;
}

sub arrows_of_tools {
    my ($contract) = @_;
    for my $file (files('^tools/.*\.(h|c|cpp)$')) {
        my $module = tool_module_of($file =~ s{^tools/}{}r);
        complain($file, 1, 'belongs to no module of the tools'), next unless $module;
        my $number = 0;
        for (lines_of($file)) {
            $number++;
            next unless /^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+\/[^>]+)>)/;
            my $quoted = defined $1;
            my $target = $quoted ? $1 : $2;
            my $to = tool_module_of($target);
            if ($to) {
                $used{"$module $to"} = 1;
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
    return $file =~ m{^src/(trace/(trace|format_check)\.h$|platform/(thread_annotations|non_copyable|lock_hold)\.h$|contract/)}
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

# --- lines: a file can be read in one go --------------------------------------------------

sub lines {
    for my $file (files('\.(h|hpp|c|cpp|idl|rc|rgs|def|cmake|sh|pl)$|CMakeLists\.txt$')) {
        my @lines = lines_of($file);
        complain($file, 601, scalar(@lines) . ' lines; 600 are allowed') if @lines > 600;
    }
}

# --- literals: a GUID, a name, a table of numbers is defined once --------------------------

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

# --- the same for the contract's numbers and texts, which have names there

my $contract_header = qr{^(src/contract|sdk/include)/.*\.h$};
my $a_number = '(?<![\w.])-?(?:0[xX][0-9A-Fa-f]{1,8}|\d+(?:\.\d*)?)[uUfFlL]*(?![\w.])';
my $a_text = '^(?!\s*#\s*include).*?\K(?:\bL|\bu)?"(?:[^"\\\\\n]|\\\\.)+"';
my (%number_names, %is_public, %text_places);

# Constants whose value is a common one, and the files in which it nevertheless means nothing else.
my %watched = (
    KORA4_ENGINE_FULL             => '.',
    KORA4_GRAPHIC_EQ_MIN_GAIN     => '.',
    KORA4_SAMPLING_PERIOD_DEFAULT => '^src/|^tools/(settings|kora4ctl)/|^bench/windows/(place|cases)|^sdk/samples/',
    cMaxTextBytes                 => '.',
    cStaticNumber57               => '^src/',
);

sub value_of {
    my ($literal) = @_;
    return $literal =~ /^0[xX]/ ? hex($literal =~ s/[uUlL]+$//r) : 0 + ($literal =~ s/[uUfFlL]+$//r);
}

# Below 100, round, or a run of one bits: such a number can mean anything.
sub is_any_number {
    my ($value) = @_;
    my $size = abs($value);
    return 1 if $size < 100 || $size =~ /^[1-9]0+$/;
    return 0 if $size != int($size);
    $size >>= 1 while !($size & 1);
    return !($size & ($size + 1));
}

# The key under which the constants are found that a literal may repeat.
sub keys_of {
    my ($literal) = @_;
    my $value = value_of($literal);
    return is_any_number($value) ? $literal =~ /^0[xX]/ ? sprintf('0x%X', $value) : "watched $value" : $value;
}

# One word belongs to the language, or is a name that the code also has.
sub is_a_word {
    my ($text) = @_;
    return length($text) < 5 || $text =~ /^[\w-]*$/ || $text !~ /[A-Za-z]/;
}

sub without_texts {
    my ($text) = @_;
    return $text =~ s/"(?:[^"\\\n]|\\.)*"/'"' . '.' x (length($&) - 2) . '"'/ger;
}

sub names_in_contract {
    my ($file, $text) = @_;
    my $code = without_texts($text);
    while ($code =~ /\b(\w+)\s*=\s*($a_number)\s*[,;}]|#define\s+(\w+)\s+\(?($a_number)\)?\s*$/gm) {
        my ($name, $literal) = ($1 // $3, $2 // $4);
        $number_names{keys_of($literal)}{$name} = 1
            if !is_any_number(value_of($literal)) || $watched{$name};
        $is_public{$name} = 1 if $file =~ m{^sdk/include/};
    }
    return if $file =~ m{^src/contract/messages/};    # the statements of the trace have these
    while ($text =~ /$a_text/gm) {
        my $what = $&;
        my $line = line_at($text, pos $text);
        my $plain = substr($what =~ s/^[Lu]//r, 1, -1);
        $text_places{$plain} //= [$file, $line, $what =~ /^[Lu]/] unless is_a_word($plain);
    }
}

# A literal is a copy unless a comment at it says that it is something else, as in
# 'not cMaxTextBytes: any size will do'.
sub copies_in {
    my ($file, $text) = @_;
    # The samples are clients: they know the public headers and what the documents say.
    my $is_sample = $file =~ m{^sdk/samples/};
    my @with_comments = lines_of($file);
    my $code = without_texts($text);
    while ($code =~ /$a_number/g) {
        my ($literal, $line) = ($&, line_at($code, pos $code));
        my @names = grep { $file =~ ($watched{$_} // '.') && ($is_public{$_} || !$is_sample) }
            sort keys %{$number_names{keys_of($literal)} // {}} or next;
        my ($above, $here) = @with_comments[$line - 2, $line - 1];
        my $own = join('|', @names);
        next if "$above$here" =~ /\bnot ($own)\b/;
        # The definition itself; in the contract a second constant may be 50 as well.
        my $any = is_any_number(value_of($literal)) ? '\w+' : $names[0];
        next if $file =~ $contract_header && $here =~ /\b$any\s*=\s*\Q$literal\E|#define\s+$any\s/;
        complain($file, $line, "$literal is $own of the contract");
    }
    return if $is_sample;
    while ($text =~ /$a_text/gm) {
        my ($what, $line) = ($&, line_at($text, pos $text));
        my $first = $text_places{substr($what =~ s/^[Lu]//r, 1, -1)} or next;
        next if "$first->[0] $first->[1]" eq "$file $line" || $first->[2] && $what =~ /^[Lu]/;
        complain($file, $line, "a second copy of $what, which is defined at $first->[0]:$first->[1]");
    }
    # Property ids have names, or are in the tables of the fields.
    my $id = '\bpid\s*[=!]=\s*\d+\b|\b(?:Setting|(?:Preset|Global)Patch(?:Key)?)\((?:[^;()]*,)?\s*\d+\s*\)';
    while ($code =~ /$id/g) {
        complain($file, line_at($code, pos $code), "a property id as a number: $&");
    }
}

# The names of keys and objects, which a script could only repeat.
sub names_in_scripts {
    my %names = map { lc(s/\\\\/\\/gr) => $text_places{$_} } grep { /[\\{]/ } keys %text_places;
    for my $file (files('^scripts/.*\.sh$')) {
        my $number = 0;
        for my $line (lines_of($file)) {
            $number++;
            my ($name) = grep { index(lc $line, $_) >= 0 } sort keys %names or next;
            complain($file, $number, "a second copy of '$name', which is defined at $names{$name}[0]:$names{$name}[1]");
        }
    }
}

# The samples are clients: they know the public header and what the documents say.
my $client = qr{^sdk/samples/};

sub copies_of_the_contract {
    my @sources = files('^(src|sdk|tools|bench)/.*\.(h|hpp|c|cpp|rc)$');
    my %code = map { $_ => code_of($_) } @sources;
    names_in_contract($_, $code{$_}) for grep { $_ =~ $contract_header } @sources;
    my %found = map { $_ => 1 } map { keys %$_ } values %number_names;
    complain('tests/checks/check.pl', 1, "there is no $_ in the contract to be watched")
        for grep { !$found{$_} } sort keys %watched;
    copies_in($_, $code{$_}) for @sources;
    names_in_scripts();
}

sub literals {
    for my $file (files('^(src|idl|sdk|tools|bench|scripts)/.*\.(h|hpp|c|cpp|idl|rc|rgs|in|def|sh)$')) {
        my $text = code_of($file);
        my $at = sub { ($file, line_at($text, $_[0])) };
        guids_in($text, $at) unless $file =~ $client;
        literals_in($text, $at) if $file =~ m{^(src|tools)/};
    }
    copies_of_the_contract();
    for my $what (sort keys %places) {
        my @where = @{$places{$what}};
        next if @where < 2;
        my $first = "$where[0][0]:$where[0][1]";
        complain($_->[0], $_->[1], "a second copy of the $what, which is defined at $first")
            for @where[1 .. $#where];
    }
}

# --- functions: about one screen -----------------------------------------------------------

my $most_lines = 60;

# What an opening brace belongs to, judged by the text since the last statement. After a name
# without a blank, as in 'member{', a value follows.
sub kind_of_brace {
    my ($head) = @_;
    $head =~ s/^(?:\s|(?:public|protected|private):)*(?:template\s*<.*?>\s*)?//s;
    return 'scope' if $head =~ /^(?:inline\s+)?(?:class|struct|union|enum|namespace|extern)\b/ && $head !~ /\)\s*$/;
    my $behind = qr{const|noexcept|override|final|->\s*[\w:<>*&\s]+|[A-Z_]+\([^()]*\)};
    return 'function' if $head =~ /\s$/ && $head =~ /\)(?:\s+$behind)*\s*$|\)\s*:\s.*[)}]\s*$/s;
    return 'value';
}

# The functions of a file that is formatted by clang-format, outermost ones only: a lambda is a
# part of the function around it.
sub functions {
    for my $file (files('^(src|tools|panel|sdk|bench)/.*\.(h|hpp|c|cpp)$')) {
        my $text = code_of($file) =~ s{R"(\w*)\((.*?)\)\1"}{'""' . ($2 =~ tr/\n//cdr)}gser;
        $text =~ s/'(?:[^'\\\n]|\\.)'/' '/g;
        $text = without_texts($text) =~ s/^[ \t]*#(?:.*\\\n)*.*$/$& =~ tr{\n}{}cdr/germ;
        my ($head_at, $begin, $inside, @open) = (0, 0, 0);
        while ($text =~ /[{};]/g) {
            my ($at, $sign) = ($-[0], $&);
            my $kind = 'statement';
            if ($sign eq '{') {
                my $head = substr($text, $head_at, $at - $head_at);
                $kind = $inside ? 'block' : kind_of_brace($head);
                push @open, $kind;
                if ($kind eq 'function') {
                    $head =~ /^(?:\s|(?:public|protected|private):)*/;
                    ($inside, $begin) = (1, line_at($text, $head_at + length($&)));
                }
            } elsif ($sign eq '}') {
                $kind = pop(@open) // 'none';
                if ($kind eq 'function') {
                    my $length = line_at($text, $at) - $begin + 1;
                    complain($file, $begin, "a function of $length lines; $most_lines are allowed")
                        if $length > $most_lines;
                    $inside = 0;
                }
            }
            # A value is a part of what contains it.
            $head_at = $at + 1 if $kind ne 'value';
        }
        complain($file, 1, 'its braces do not match') if @open;
    }
}

# --- comments: headers say what they guarantee ----------------------------------------------

my $least_share = 25;    # per cent of the lines that are not blank

sub comments {
    my ($comments, $all) = (0, 0);
    for my $file (files('^(src|tools|panel|sdk/include)(/.*)?/[^/]+\.(h|hpp)$')) {
        my $lines = join('', lines_of($file));
        $comments += () = $lines =~ m{//|(?<=\n)[ \t]*/?\*}g;
        $all += () = $lines =~ /\S[^\n]*\n/g;
    }
    return unless $all;
    my $share = 100 * $comments / $all;
    complain('headers', 1, sprintf('%.1f %% of the lines are comments; at least %d %% must be', $share, $least_share))
        if $share < $least_share;
    printf "comments: %d of %d lines of the headers, %.1f %%\n", $comments, $all, $share;
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
    arrows => \&arrows, comments => \&comments, files => \&files_rule, functions => \&functions,
    headers => \&headers, lines => \&lines, literals => \&literals, pure => \&pure, words => \&words,
);
die "usage: check.pl @{[join '|', sort keys %rules]} ROOT\n"
    unless defined $rule && $rules{$rule} && defined $root && -d $root;
$rules{$rule}->();
# A rule that saw nothing has shown nothing.
die "$rule: no file to look at under $root\n" unless $looked_at;
print "$rule: $looked_at files, $broken findings\n";
exit($broken ? 1 : 0);
