#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# Carries the documentation blocks of an interface definition into what is generated from it,
# because the interface compiler drops comments and takes no help strings for enumerators.
#
#   annotate.pl header FILE.idl RAW.h FILE.h
#   annotate.pl typelib FILE.idl RAW.tlb FILE.tlb
#
# In the header each declaration gets the block that stands before it in the definition, in C
# and in C++; a method's begins with its help string. A declaration without a block is an
# error, and so is a block that documents nothing.
use strict;
use warnings;

my ($mode, $idl, $in, $out) = @ARGV;

sub contents {
    my ($file) = @_;
    open(my $handle, '<:raw', $file) or die "$file: $!\n";
    local $/;
    return scalar <$handle>;
}

sub write_contents {
    my ($file, $bytes) = @_;
    open(my $handle, '>:raw', $file) or die "$file: $!\n";
    print $handle $bytes;
    close($handle) or die "$file: $!\n";
}

# --- the definition ------------------------------------------------------------------------

my (%text_of, %is_used);

# A declaration behind a block, and what it is called in %text_of.
my @declarations = (
    [qr/^typedef (?:enum|struct|union) (\w+)/,       'type'],
    [qr/^\[[^\]]*\]\s*interface (\w+) :/,            'type'],
    [qr/^\[[^\]]*\]\s*coclass (\w+)/,                 'class'],
    [qr/^HRESULT (\w+)\(/,                           'method'],
    [qr/^(e\w+) = \d+/,                              'member'],
    [qr/^(?:\w+ )?(m_\w+)(?:\[\d+\])?[;)\s]/,        'member'],
);

# The text of a block, line by line, without stars.
sub lines_of_block {
    my @lines = map { s/^\s*\*? ?//r =~ s/\s+$//r } split(/\n/, shift);
    shift @lines while @lines && $lines[0] eq '';
    pop @lines while @lines && $lines[-1] eq '';
    return @lines;
}

sub read_definition {
    my $text = contents($idl);
    while ($text =~ m{/\*\*(.*?)\*/\s*(?:\[helpstring\("([^"]*)"\)\]\s*)?}gs) {
        my ($help, @lines) = ($2, lines_of_block($1));
        my $rest = substr($text, pos($text), 2000);
        my ($found) = grep { $rest =~ $_->[0] } @declarations
            or die "$idl: a documentation block before \"" . substr($rest, 0, 60) . "\"\n";
        $rest =~ $found->[0];
        my $key = "$found->[1] $1";
        die "$idl: no help string behind the block of $1\n" if $found->[1] eq 'method' && !$help;
        # Help strings, and blocks that serve as such, have no full stop.
        $lines[0] .= '.' if @lines == 1 && $lines[0] !~ /[.:]$/;
        unshift @lines, "$help.", '' if $help;
        die "$idl: two blocks for $1\n" if $text_of{$key};
        $text_of{$key} = \@lines;
    }
}

sub text_of {
    my ($kind, $name) = @_;
    my $lines = $text_of{"$kind $name"} or die "$idl: $name has no documentation block\n";
    $is_used{"$kind $name"} = 1;
    return @$lines;
}

# --- the header ----------------------------------------------------------------------------

sub comment {
    my ($indent, @lines) = @_;
    return "$indent/** $lines[0] */\n" if @lines == 1;
    return "$indent/**\n" . join('', map { s/\s+$//r . "\n" } map { "$indent * $_" } @lines)
        . "$indent */\n";
}

# An identifier is declared by a macro, to whose names no tool attaches a comment: it is
# declared once more, plainly.
sub identifier {
    my ($name, @lines) = @_;
    return comment('', @lines) . "EXTERN_C const GUID $name;\n";
}

# What a line of the header declares, and what goes in front of it.
my @header_lines = (
    [qr/^typedef (?:enum|struct) (\w+) \{/, sub {
        my ($name) = @_;
        return comment('', "The methods of $1, for C.") if $name =~ /^(\w+)Vtbl$/;
        return "\n" . comment('', text_of('type', $name));
    }],
    [qr/^interface (\w+) \{/,               sub { comment('', text_of('type', $_[0])) }],
    [qr/^MIDL_INTERFACE/,                   sub { comment('', text_of('type', $_[1])) }],
    [qr/^typedef (?:class|struct) (\w+) \1;/, sub { comment('', text_of('class', $_[0])) }],
    [qr/^class DECLSPEC_UUID\([^)]*\) (\w+);/, sub { comment('', text_of('class', $_[0])) }],
    [qr/^ {4}virtual HRESULT STDMETHODCALLTYPE (\w+)\(/,
        sub { comment('    ', text_of('method', $_[0])) }],
    [qr/^ {4}(?:HRESULT|ULONG) \(STDMETHODCALLTYPE \*(\w+)\)\(/,
        sub { $_[0] =~ /^(QueryInterface|AddRef|Release)$/ ? '' : comment('    ', text_of('method', $_[0])) }],
    [qr/^ {4}(e\w+) = \d+/,                 sub { comment('    ', text_of('member', $_[0])) }],
    [qr/^ {4}union \w+ \{/,                 sub { comment('    ', text_of('member', 'm_values')) }],
    [qr/^(?: {4}){1,2}\w+ (m_\w+)(?:\[\d+\])?;/, sub { comment($_[2], text_of('member', $_[0])) }],
    [qr/^ {4}CONST_VTBL \w+Vtbl\* (lpVtbl);/, sub { comment('    ', 'Its methods.') }],
    [qr/^DEFINE_GUID\(CLSID_(\w+),/,        sub { identifier("CLSID_$_[0]", text_of('class', $_[0])) }],
    [qr/^DEFINE_GUID\(IID_(\w+),/,
        sub { identifier("IID_$_[0]", "The identifier of the interface $_[0].") }],
    [qr/^DEFINE_GUID\(LIBID_(\w+),/,
        sub { identifier("LIBID_$_[0]", "The identifier of the type library $_[0].") }],
);

# A COM interface has no destructor, which a careful compiler would like to be virtual.
my $is_gnu_cpp = '#if defined(__cplusplus) && defined(__GNUC__)';
my $quiet = qq{$is_gnu_cpp\n#pragma GCC diagnostic push\n}
    . qq{#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"\n#endif\n};
my $loud = qq{$is_gnu_cpp\n#pragma GCC diagnostic pop\n#endif\n};

sub annotate_header {
    my @lines = split(/(?<=\n)/, contents($in));
    my $header = '';
    for my $i (0 .. $#lines) {
        my $line = $lines[$i];
        my ($next) = ($lines[$i + 1] // '') =~ /^(\w+)/;
        for my $row (@header_lines) {
            next unless $line =~ $row->[0];
            my $name = $1;
            my ($indent) = $line =~ /^( *)/;
            $header .= $row->[1]->($name, $next, $indent);
            last;
        }
        # The name of a member that is a record stands behind it, and so does its comment.
        $line =~ s{^( {4}\} (m_\w+);)$}{"$1 /**< " . join(' ', text_of('member', $2)) . ' */'}e;
        $header .= $line;
    }
    my $guard = qr/__\w+_h__/;
    $header =~ s/^#define $guard\n\K/$quiet/m && $header =~ s/^(?=#endif \/\* $guard \*\/)/$loud/m
        or die "$in: no guard\n";
    my @unused = grep { !$is_used{$_} } sort keys %text_of;
    die "$in: nothing to document for: @unused\n" if @unused;
    write_contents($out, $header);
}

# --- the type library ------------------------------------------------------------------------

# The parts of the file that are used here. Numbers are 32-bit, little-endian.
my $types_at           = 0x54;  # behind the head; a file of this compiler names no help library
my $number_of_types_at = 0x20;
my $segments           = 15;
my $segment_size       = 16;    # its place in the file, its length, two more numbers
my ($type_segment, $name_segment, $string_segment) = (0, 7, 8);
my $help_offset        = 0x18;  # of a constant's record, behind the help context
my $name_offset        = 12;    # of the characters in an entry of the names

sub number { return unpack('V', substr($_[0], $_[1], 4)) }

sub annotate_typelib {
    my $file = contents($in);
    die "$in: not a type library\n" unless $file =~ /^MSFT/;
    my $types = number($file, $number_of_types_at);
    my $directory = $types_at + 4 * $types;
    my $segment = sub { return number($file, $directory + $segment_size * $_[0]) };
    my $strings_length_at = $directory + $segment_size * $string_segment + 4;
    my $strings_length = number($file, $strings_length_at);
    my $strings = '';
    my %inserted;  # place in the old file => bytes
    my %number_at; # place in the old file => new number

    for my $type (0 .. $types - 1) {
        my $info = $segment->($type_segment) + number($file, $types_at + 4 * $type);
        my ($kind, $members) = (number($file, $info) & 0xF, number($file, $info + 0x18));
        next unless $kind == 0;  # an enumeration
        my $variables = $members >> 16;
        my $block = number($file, $info + 4);
        my $length = number($file, $block);
        my $names = $block + 4 + $length + 4 * $variables;
        my ($at, $grown) = ($block + 4, 0);
        for my $i (0 .. $variables - 1) {
            my $entry = $segment->($name_segment) + number($file, $names + 4 * $i);
            my $name = substr($file, $entry + $name_offset, ord(substr($file, $entry + 8, 1)));
            my $help = join(' ', text_of('member', $name)) =~ s/\.$//r;
            my $head = number($file, $at);
            my $size = $head & 0xFFFF;
            die "$in: $name has a help string already\n" if $size > $help_offset;
            $inserted{$at + $size} =
                "\0" x ($help_offset - $size) . pack('V', $strings_length + length($strings));
            $number_at{$at} = $head - $size + $help_offset + 4;
            $number_at{$names + 4 * ($variables + $i)} =
                number($file, $names + 4 * ($variables + $i)) + $grown;
            $grown += $help_offset + 4 - $size;
            $at += $size;
            # Its length, its characters, and filling up to a multiple of four bytes.
            my $string = pack('v', length($help)) . $help;
            $strings .= $string . 'W' x (-length($string) % 4);
        }
        $number_at{$block} = $length + $grown;
    }
    die "$in: no enumerators\n" unless %inserted;

    $inserted{$segment->($string_segment) + $strings_length} .= $strings;
    $number_at{$strings_length_at} = $strings_length + length($strings);
    # What points to a place in the file moves with it.
    my $moved = sub {
        my ($place) = @_;
        my $by = 0;
        $_ <= $place and $by += length($inserted{$_}) for keys %inserted;
        return $place + $by;
    };
    for my $place (map { $directory + $segment_size * $_ } 0 .. $segments - 1) {
        my $old = number($file, $place);
        $number_at{$place} = $moved->($old) unless $old == 0xFFFFFFFF;
    }
    for my $type (0 .. $types - 1) {
        my $place = $segment->($type_segment) + number($file, $types_at + 4 * $type) + 4;
        $number_at{$place} = $moved->(number($file, $place));
    }
    substr($file, $_, 4) = pack('V', $number_at{$_}) for keys %number_at;
    substr($file, $_, 0) = $inserted{$_} for sort { $b <=> $a } keys %inserted;
    write_contents($out, $file);
}

die "usage: annotate.pl header|typelib FILE.idl IN OUT\n" unless @ARGV == 4;
read_definition();
$mode eq 'header' ? annotate_header() : annotate_typelib();
