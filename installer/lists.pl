#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# lists.pl TREE WHAT: what an installer contains, from the tree that CMake has installed. WHAT is "nsh"
# for the NSIS compiler, "folders" or "features" for the WiX compiler; any other text gives the GUID of
# that text. Each file belongs to a feature.
use strict;
use warnings;
use Digest::SHA qw(sha1_hex);
use File::Find;

# The first pattern that matches says where a file belongs.
my @features = (
    [panel   => qr{^bin/KORA4Panel\.exe$}],
    [tools   => qr{^bin/(kora4ctl\.exe|kora4sim\.exe|scenes/.*)$}],
    [library => qr{^(bin/.*|LICENSE)$}],
    [sdk     => qr{.}],
);
# In the order in which they are shown.
my @order = qw(library tools panel sdk);

my ($tree, $kind) = @ARGV;
my %files;
find({no_chdir => 1, wanted => sub {
    return unless -f;
    my $path = substr($_, length($tree) + 1);
    # The list on the machine is in its code page.
    die "$path: a name has letters, digits, dots, '+', '-' and '_' only\n" if $path =~ m{[^\w./+-]|[^\x20-\x7e]};
    my ($feature) = map { $_->[0] } grep { $path =~ $_->[1] } @features;
    push @{$files{$feature}}, $path;
}}, $tree);

sub folder_and_name {
    my ($path) = @_;
    return $path =~ m{^(?:(.*)/)?([^/]+)$};
}

sub print_nsh {
    print "; Made by lists.pl.\n";
    for my $feature (@order) {
        print "!macro Files_$feature\n";
        for my $path (sort @{$files{$feature} // []}) {
            my ($folder, $name) = folder_and_name($path);
            $folder = defined $folder ? '\\' . $folder =~ tr{/}{\\}r : '';
            print "  !insertmacro Stage \"$folder\" \"$name\"\n";
        }
        print "!macroend\n";
    }
    my @there = grep { $files{$_} } @order;
    print "!define FEATURES \"", join(', ', @there), "\"\n";
    print "!define HAVE_PANEL\n" if $files{panel};
}

# A name that Windows Installer takes for anything, the same in each build.
sub id_of {
    my ($kind, $path) = @_;
    return $kind . substr(sha1_hex($path), 0, 16);
}

sub guid_of {
    my ($text) = @_;
    my $h = uc(sha1_hex("velto kora4 asl $text"));
    # Version 5 of the GUIDs: from a name.
    return sprintf('%s-%s-5%s-8%s-%s', map { substr($h, $_->[0], $_->[1]) } [0, 8], [8, 4], [13, 3], [17, 3], [20, 12]);
}

sub feature_of {
    my ($path) = @_;
    return (map { $_->[0] } grep { $path =~ $_->[1] } @features)[0];
}

# Each file is a component, so that any of them can be repaired alone.
sub print_folder {
    my ($folder, $indent) = @_;
    my (%folders, @names);
    for my $path (sort map { @$_ } values %files) {
        next unless $folder eq '' || index($path, "$folder/") == 0;
        my $rest = $folder eq '' ? $path : substr($path, length($folder) + 1);
        $rest =~ m{^([^/]+)/} ? $folders{$1} = 1 : push @names, $path;
    }
    for my $path (@names) {
        my $id = id_of('f', $path);
        my $shortcut = $path =~ m{KORA4Panel\.exe$}
            ? '<Shortcut Id="PanelShortcut" Name="KORA4 Panel" Directory="ProgramMenuFolder" Advertise="yes" WorkingDirectory="BIN"/>' : '';
        print "$indent<Component Id=\"c$id\" Guid=\"", guid_of($path), "\" Win64=\"yes\">",
            "<File Id=\"$id\" Name=\"", (folder_and_name($path))[1],
            "\" Source=\"$path\" KeyPath=\"yes\">$shortcut</File></Component>\n";
    }
    for my $name (sort keys %folders) {
        my $path = $folder eq '' ? $name : "$folder/$name";
        my $id = $path eq 'bin' ? 'BIN' : id_of('d', $path);
        print "$indent<Directory Id=\"$id\" Name=\"$name\">\n";
        print_folder($path, "$indent  ");
        print "$indent</Directory>\n";
    }
}

my %titles = (
    library => ['Library', 'QXA64T.dll, registered for all users, with its proxies and manifest', 1],
    tools   => ['Tools', 'kora4ctl and kora4sim', 1],
    panel   => ['Panel', 'A window that shows and changes the settings', 1],
    # Above the usual level: only if it is asked for.
    sdk     => ['Sdk', 'Headers, libraries, samples and documents', 200],
);

# The others are below the library, so none of them is installed without it.
sub print_features {
    print "<Include>\n";
    for my $feature (grep { $files{$_} } @order) {
        my ($id, $description, $level) = @{$titles{$feature}};
        print "<Feature Id=\"$id\" Title=\"$id\" Description=\"$description\" Level=\"$level\" AllowAdvertise=\"no\">\n";
        print "  <ComponentRef Id=\"c", id_of('f', $_), "\"/>\n" for sort @{$files{$feature}};
        print "</Feature>\n" if $feature ne 'library';
    }
    print "</Feature>\n</Include>\n";
}

if ($kind eq 'nsh') {
    print_nsh();
} elsif ($kind eq 'folders') {
    print "<Include>\n";
    print_folder('', '');
    print "</Include>\n";
} elsif ($kind eq 'features') {
    print_features();
} else {
    print guid_of($kind), "\n";
}
