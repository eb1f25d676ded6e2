#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# installed_page.pl PAGE FOLDER: writes a page of docs/ into the docs/ of an installed SDK. Links
# follow what is installed elsewhere; a link to what is only in the project becomes its text.
use strict;
use warnings;
use File::Basename;
use File::Path qw(make_path);

my ($page, $folder) = @ARGV;
open(my $in, '<', $page) or die "$page: $!\n";
my $text = do { local $/; <$in> };
$text =~ s/\r//g;

# Where a link out of docs/ leads in the SDK; nothing if it is not there.
sub installed {
    my ($target) = @_;
    return $target if $target =~ s{^\.\./sdk/(include|samples)/}{../$1/};
    return $target if $target =~ m{^\.\./(CHANGELOG\.md|README\.md|LICENSE|idl/veltokora4api\.idl)};
    return undef;
}

$text =~ s{(\[[^\]]*\])\((\.\./[^)]*)\)}{
    my ($words, $target) = ($1, installed($2));
    defined $target ? "$words($target)" : substr($words, 1, -1)
}ge;
$text =~ s{`sdk/(include|samples)/}{`$1/}g;
make_path($folder);
my $out = "$folder/" . basename($page);
open(my $file, '>', $out) or die "$out: $!\n";
print $file $text;
close($file) or die "$out: $!\n";
