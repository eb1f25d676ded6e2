#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# bill_of_materials.pl TREE VERSION: the files of TREE with their sums, and what is linked into them, as
# SPDX 2.3 in JSON. The same tree, made with the same packages of Debian, gives the same bytes; the
# time is SOURCE_DATE_EPOCH.
use strict;
use warnings;
use Digest::SHA qw(sha1_hex);
use File::Find;
use JSON::PP;
use POSIX qw(strftime);

my ($tree, $version) = @ARGV;
die "set SOURCE_DATE_EPOCH\n" unless defined $ENV{SOURCE_DATE_EPOCH};

# What others have written, by its package of Debian: name, licence, and what it is part of.
my @parts = (
    ['g++-mingw-w64-x86-64-posix', 'libstdc++ and libgcc', 'GPL-3.0-or-later WITH GCC-exception-3.1', qr{\.(dll|exe)$}],
    ['mingw-w64-x86-64-dev', 'mingw-w64 runtime', 'NOASSERTION', qr{\.(dll|exe)$}],
    ['libcli11-dev', 'CLI11', 'BSD-3-Clause', qr{/kora4(ctl|sim)\.exe$}],
    ['nlohmann-json3-dev', 'JSON for Modern C++', 'MIT', qr{/kora4(ctl|sim)\.exe$}],
);

my @paths;
find({no_chdir => 1, wanted => sub { push @paths, substr($_, length($tree) + 1) if -f }}, $tree);
@paths = sort @paths;

sub sum { my ($kind, $path) = @_; return Digest::SHA->new($kind)->addfile("$tree/$path", 'b')->hexdigest }
sub id { my ($kind, $name) = @_; return "SPDXRef-$kind-" . $name =~ s/[^A-Za-z0-9.]/-/gr }

my $product = 'SPDXRef-Package-kora4asl';
my (@files, @relationships, %sha1);
for my $path (@paths) {
    $sha1{$path} = sum(1, $path);
    push @files, {
        SPDXID => id('File', $path), fileName => "./$path",
        checksums => [{algorithm => 'SHA1', checksumValue => $sha1{$path}},
                      {algorithm => 'SHA256', checksumValue => sum(256, $path)}],
        licenseConcluded => 'MIT', licenseInfoInFiles => ['NOASSERTION'], copyrightText => 'NOASSERTION',
    };
    push @relationships, [$product, 'CONTAINS', id('File', $path)];
}

my @packages = {
    SPDXID => $product, name => 'KORA4 ASL', versionInfo => $version, supplier => 'Organization: Velto',
    downloadLocation => 'NOASSERTION', filesAnalyzed => JSON::PP::true,
    packageVerificationCode => {packageVerificationCodeValue => sha1_hex(join('', sort values %sha1))},
    licenseConcluded => 'MIT', licenseDeclared => 'MIT', licenseInfoFromFiles => ['NOASSERTION'],
    copyrightText => 'NOASSERTION', primaryPackagePurpose => 'LIBRARY',
};
for my $part (@parts) {
    my ($debian, $name, $licence, $pattern) = @$part;
    my $found = qx{dpkg-query -W -f '\${Version}' '$debian' 2>/dev/null} || die "$debian is not installed\n";
    push @packages, {
        SPDXID => id('Package', $debian), name => $name, versionInfo => $found,
        downloadLocation => 'NOASSERTION', filesAnalyzed => JSON::PP::false,
        licenseConcluded => $licence, licenseDeclared => $licence, copyrightText => 'NOASSERTION',
        externalRefs => [{referenceCategory => 'PACKAGE-MANAGER', referenceType => 'purl',
                          referenceLocator => "pkg:deb/debian/$debian\@$found?distro=bookworm" =~ s/\+/%2B/gr}],
    };
    push @relationships, [id('File', $_), 'STATIC_LINK', id('Package', $debian)] for grep { $_ =~ $pattern } @paths;
}

my $json = JSON::PP->new->canonical->pretty;
my $content = $json->encode([\@packages, \@files]);
print $json->encode({
    spdxVersion => 'SPDX-2.3', dataLicense => 'CC0-1.0', SPDXID => 'SPDXRef-DOCUMENT',
    name => "kora4asl-$version",
    documentNamespace => "https://spdx.org/spdxdocs/kora4asl-$version-" . sha1_hex($content),
    creationInfo => {created => strftime('%Y-%m-%dT%H:%M:%SZ', gmtime($ENV{SOURCE_DATE_EPOCH})),
                     creators => ['Organization: Velto', 'Tool: bill_of_materials.pl']},
    packages => \@packages, files => \@files,
    relationships => [map { {spdxElementId => $_->[0], relationshipType => $_->[1], relatedSpdxElement => $_->[2]} }
        ['SPDXRef-DOCUMENT', 'DESCRIBES', $product], @relationships],
});
