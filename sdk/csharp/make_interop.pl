#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# make_interop.pl IDL HEADER... OUT: writes the C# declarations of the public interfaces from their
# definition, and the numbers of the headers as constants. Whatever it does not understand is an error.
use strict;
use warnings;

my ($idl, @headers) = @ARGV;
my $out = pop @headers;

sub text_of {
    my ($file) = @_;
    open(my $in, '<', $file) or die "$file: $!\n";
    local $/;
    return <$in> =~ s/\r//gr;
}

# What a parameter or field is in C#, by its type in the definition.
my %plain = (LONG => 'int', ULONG => 'uint', float => 'float', BOOL => '[MarshalAs(UnmanagedType.Bool)] bool');

# A documentation block as the summary that an IDE shows.
sub summary {
    my ($block, $indent) = @_;
    my @lines = split(/\n/, $block // '');
    s/^\s*\/?\*+\/?\s?//, s/\s*\*\/\s*$//, s/&/&amp;/g, s/</&lt;/g for @lines;
    shift @lines while @lines && $lines[0] !~ /\S/;
    pop @lines while @lines && $lines[-1] !~ /\S/;
    return '' unless @lines;
    return join('', map { "$indent/// $_" =~ s/\s+$//r . "\n" } '<summary>', @lines, '</summary>');
}

sub parameter {
    my ($text) = @_;
    my ($attributes, $type, $stars, $name, $size) =
        $text =~ /^\s*\[([^\]]*)\]\s*(\w+)\s*(\**)\s*(\w+)(?:\[(\d+)\])?\s*$/
        or die "$idl: a parameter that is not understood: $text\n";
    my ($in, $out) = map { scalar($attributes =~ /\b$_\b/) } qw(in out);
    $type = 'LPWSTR' if $type eq 'KORA4_OUT_STRING';
    my $way = !$stars ? '' : $in && $out ? 'ref ' : $out ? 'out ' : '[In] ref ';
    if ($size) {
        # Strings go through as pointers: the caller takes and frees them.
        my $element = $type eq 'LPWSTR' ? 'IntPtr' : $plain{$type};
        return "[In, Out, MarshalAs(UnmanagedType.LPArray, SizeConst = $size)] $element\[] $name";
    }
    return "[MarshalAs(UnmanagedType.LPWStr)] $way" . "string $name" if $type =~ /^LPC?WSTR$/;
    return "$type $name" if $type =~ /^I[A-Z]/ && length($stars) == 1;
    return "[MarshalAs(UnmanagedType.Bool)] $way" . "bool $name" if $type eq 'BOOL';
    return $way . ($plain{$type} // $type) . " $name";
}

my $text = text_of($idl);
# What only the proxy pass sees.
$text =~ s/#ifdef KORA4_WIRE.*?#endif\n//s;
$text =~ s{^\s*//.*\n}{}gm;
my $doc = '(?:(/\*\*(?:(?!\*/).)*\*/)\s*)?';
# Attributes between a documentation block and what it documents.
my $attributes = '(?:\[(?:[^\]"]|"[^"]*")*\]\s*)?';

sub enumerations {
    my $code = '';
    while ($text =~ /${doc}typedef enum (\w+)\s*\{(.*?)\}/gs) {
        my ($block, $name, $body) = ($1, $2, $3);
        $code .= summary($block, '    ') . "    public enum $name\n    {\n";
        while ($body =~ /$doc$attributes\b(e\w+) = (\d+)/gs) {
            $code .= summary($1, '        ') . "        $2 = $3,\n";
        }
        $code .= "    }\n\n";
    }
    return $code;
}

# Selector and members are as long as each other: 4 bytes.
sub unions {
    my $code = '';
    while ($text =~ /${doc}typedef union (\w+)\s+switch\s*\(\s*$doc(\w+) (\w+)\)\s*$doc\w+\s*\{(.*?)\n\}/gs) {
        my ($block, $name, $selector_type, $selector, $body) = ($1, $2, $4, $5, $7);
        $code .= summary($block, '    ')
            . "    [StructLayout(LayoutKind.Explicit, Size = 8)]\n    public struct $name\n    {\n"
            . "        [FieldOffset(0)] public $selector_type $selector;\n";
        while ($body =~ /case \w+:\s*$doc$attributes(\w+) (\w+);/gs) {
            $code .= "        [FieldOffset(4)] public $plain{$2} $3;\n";
        }
        $code .= "    }\n\n";
    }
    return $code;
}

sub records {
    my $code = '';
    while ($text =~ /${doc}typedef struct (\w+)\s*\{(.*?)\}/gs) {
        my ($block, $name, $body) = ($1, $2, $3);
        $code .= summary($block, '    ')
            . "    [StructLayout(LayoutKind.Sequential)]\n    public struct $name\n    {\n";
        while ($body =~ /\b(\w+) (m_\w+)(?:\[(\d+)\])?;/g) {
            $code .= $3
                ? "        [MarshalAs(UnmanagedType.ByValArray, SizeConst = $3)] public $plain{$1}\[] $2;\n"
                : "        public $plain{$1} $2;\n";
        }
        $code .= "    }\n\n";
    }
    return $code;
}

sub interfaces {
    my $code = '';
    while ($text =~ /$doc\[([^\[\]]*\buuid\(([\w-]+)\)[^\[\]]*)\]\s*interface (\w+) : IUnknown\s*\{(.*?)\n\}/gs) {
        my ($block, $guid, $name, $body) = ($1, $3, $4, $5);
        my $declared = () = $body =~ /^\s*(?:\[[^\]]*\]\s*)?HRESULT\b/gm;
        my $written = 0;
        $code .= summary($block, '    ')
            . "    [ComImport, Guid(\"$guid\"), InterfaceType(ComInterfaceType.InterfaceIsIUnknown)]\n"
            . "    public interface $name\n    {\n";
        while ($body =~ /$doc($attributes)HRESULT (\w+)\((.*?)\);/gs) {
            my ($block_of_method, $own, $method, $list) = ($1, $2, $3, $4);
            my ($help) = $own =~ /helpstring\("([^"]*)"\)/;
            $block_of_method = "$help.\n" . ($block_of_method // '') if $help;
            my @parameters = $list =~ /(\[[^\]]*\][^,\[]*(?:\[\d+\])?)/g;
            $code .= summary($block_of_method, '        ') . "        [PreserveSig]\n        int $method("
                . join(', ', map { parameter($_) } @parameters) . ");\n\n";
            $written++;
        }
        die "$idl: $name: $written of $declared methods are understood\n" unless $written && $written == $declared;
        $code =~ s/\n\n$/\n/;
        $code .= "    }\n\n";
    }
    return $code;
}

# Only this class can be created.
sub coclass {
    my ($guid, $name) = $text =~ /\[[^\]]*uuid\(([\w-]+)\)[^\]]*\]\s*coclass (VeltoKORA4APITestCoclass)\b/
        or die "$idl: the class that can be created is not there\n";
    return "    /// <summary>The class that can be created: new $name() as IVeltoKORA4API.</summary>\n"
        . "    [ComImport, Guid(\"$guid\"), ClassInterface(ClassInterfaceType.None)]\n"
        . "    public class $name\n    {\n    }\n\n";
}

sub constants {
    my $code = "    /// <summary>The numbers and result codes of the public headers.</summary>\n"
        . "    public static class KORA4Numbers\n    {\n";
    my %type_of;
    for my $header (@headers) {
        my $lines = text_of($header);
        while ($lines =~ /^#define (\w+) (.+?)(?:\s*\/\*.*)?$/gm) {
            my ($name, $value) = ($1, $2);
            next if $value =~ /^\s*["\\]/;    # words
            $value =~ s/^KORA4_RESULT_CODE\((0x\w+)\)$/unchecked((int)$1)/;
            my ($other) = $value =~ /^\(?([A-Z]\w+)(?: \+ [A-Z]\w+)*\)?$/;
            my $type = $value =~ /^\(?-?[\d.]+f\)?$/ ? 'float'
                : $value =~ /^0x\w+u$/ ? 'uint'
                : $value =~ /^(?:\d+|unchecked.*)$/ ? 'int'
                : $other ? $type_of{$other} : undef;
            die "$header: a number that is not understood: $name $value\n" unless $type;
            $type_of{$name} = $type;
            $code .= "        public const $type $name = $value;\n";
        }
    }
    return "$code    }\n";
}

my $code = enumerations() . unions() . records() . interfaces() . coclass() . constants();
open(my $file, '>', $out) or die "$out: $!\n";
print $file <<"END";
// SPDX-License-Identifier: MIT
// The KORA4 API for C#, generated from its interface definition: do not edit. Compiled by the tests
// of the library and compared with the C header; not yet run on Windows.
using System;
using System.Runtime.InteropServices;

namespace Velto.KORA4
{
${code}}
END
close($file) or die "$out: $!\n";
