# SPDX-License-Identifier: MIT
# The part of check.pl that looks at the panel's includes; uses its functions.
use strict;
use warnings;

# The public headers, as any client has them, and its own folders from the window down.
# What its model includes is platform-free.
my %below_of_panel = (
    'model'  => [],
    'worker' => ['model'],
    'window' => ['model', 'worker'],
    'main'   => ['window'],
);
my $public_header = qr{^(kora4\.hpp|kora4api(_\w+)?\.h|kora4_proxies\.h|kora4/\w+\.hpp)$};
my $plain_public_header = qr{^(kora4api_constants\.h|kora4/equalizer\.hpp)$};

sub arrows_of_panel {
    my %reached;
    for my $file (files('^panel/.*\.(h|c|cpp|rc)$')) {
        my $module = $file =~ m{^panel/(\w+)/} ? $1 : 'main';
        complain($file, 1, 'belongs to no module of the panel'), next unless $below_of_panel{$module};
        my $number = 0;
        for (lines_of($file)) {
            $number++;
            next unless /^\s*#\s*include\s*(?:"([^"]+)"|<([^>]+)>)/;
            my ($quoted, $target) = (defined $1, $1 // $2);
            if ($target =~ m{^panel/(\w+)/}) {
                $reached{"$module $1"} = 1;
                complain($file, $number, "the panel's $module must not include its $1 ($target)")
                    unless $1 eq $module || grep { $_ eq $1 } @{$below_of_panel{$module}};
            } elsif ($target =~ $public_header) {
                complain($file, $number, "the panel's model is platform-free and takes no <$target>")
                    if $module eq 'model' && $target !~ $plain_public_header;
            } elsif ($module eq 'model' && $target =~ /\.h$/) {
                complain($file, $number, "a platform header in the panel's model: <$target>");
            } elsif ($file !~ /\.rc$/ && ($quoted || $target =~ m{^kora4|^velto|^kal})) {
                complain($file, $number, "the panel is a client: \"$target\" is no public header");
            }
        }
    }
    return unless %reached;
    for my $module (sort keys %below_of_panel) {
        complain('tests/checks/check.pl', 1, "the panel's $module never includes its $_, which it may")
            for grep { !$reached{"$module $_"} } @{$below_of_panel{$module}};
    }
}

1;
