#!/usr/bin/perl
# SPDX-License-Identifier: MIT
# comments.pl LANGUAGE [NAME=WORDS...] FOLDER... <AST: which declarations of the headers in the
# folders have no comment attached, and whether the comment of each NAME has the WORDS. Reads
# clang's JSON; prints what is missing and a summary, and exits 1 if anything is, or if there is
# nothing to look at.
use strict;
use warnings;
use JSON::PP;

my $language = shift @ARGV;
my %words_of = map { split(/=/, $_, 2) } grep { /=/ } @ARGV;
my @folders = grep { !/=/ } @ARGV;

# Declarations that a person meets. What the compiler adds by itself is none of them.
my %is_met = map { $_ => 1 } qw(RecordDecl CXXRecordDecl ClassTemplateDecl EnumDecl EnumConstantDecl
    FieldDecl CXXMethodDecl CXXConstructorDecl FunctionDecl FunctionTemplateDecl VarDecl TypedefDecl
    TypeAliasDecl);
my %is_record = map { $_ => 1 } qw(RecordDecl CXXRecordDecl);

# Methods that every class of their kind has, with the meaning that everybody knows.
my $is_known_by_all = qr/^(QueryInterface|AddRef|Release|operator.*|__.*)$/;

my (%comment_of, %owner_of, %place_of, $file);

# clang names a file only where it differs from that of the location before.
sub pass_location {
    my ($location) = @_;
    return unless $location;
    pass_location($location->{spellingLoc});
    pass_location($location->{expansionLoc});
    $file = $location->{file} if $location->{file};
}

sub is_ours { my ($where) = @_; return grep { index($where, "$_/") == 0 } @folders }

# The words of a comment.
sub text_of {
    my ($node) = @_;
    return join(' ', $node->{text} // '', map { text_of($_) } @{$node->{inner} // []});
}

sub visit {
    my ($node, $scope, $is_private) = @_;
    pass_location($node->{loc});
    my $where = $file;
    pass_location($node->{range}{begin});
    pass_location($node->{range}{end});
    my $kind = $node->{kind} // '';
    my $name = $node->{name};
    my @inner = @{$node->{inner} // []};
    my $path = defined $name ? ($scope eq '' ? $name : "${scope}::$name") : $scope;
    if ($is_met{$kind} && defined $name && $where && is_ours($where) && !$is_private
        && !$node->{isImplicit} && !$node->{explicitlyDeleted} && !$node->{explicitlyDefaulted}
        && $path !~ /\bdetail::/ && $name !~ $is_known_by_all) {
        $place_of{$path} //= $where;
        # clang also gives an enumerator without a comment that of the one before.
        my @comments = grep { ($_->{kind} // '') eq 'FullComment' } @inner;
        $comment_of{$path} .= text_of($_)
            for grep { ($owner_of{"$where $_->{loc}{offset} $kind"} //= $path) eq $path } @comments;
    }
    # Members of a class are private until it says otherwise. Bodies and parameters are passed
    # for the sake of the locations only.
    my $is_hidden = $is_private || $kind !~ /^(TranslationUnitDecl|NamespaceDecl|LinkageSpecDecl|EnumDecl|ClassTemplateDecl|RecordDecl|CXXRecordDecl)$/;
    my $access = $is_hidden || ($node->{tagUsed} // '') eq 'class';
    for my $child (@inner) {
        $access = $is_hidden || $child->{access} eq 'private' if ($child->{kind} // '') eq 'AccessSpecDecl';
        visit($child, $path, $access);
    }
}

my $parser = JSON::PP->new;
$parser->incr_parse(do { local $/; <STDIN> });
while (my $node = $parser->incr_parse) {
    visit($node, '', 0);
}

my @lacking = map { "$place_of{$_}: $_ has no comment" }
    grep { ($comment_of{$_} // '') !~ /^\s*(?!-{4})\S/ } sort keys %place_of;  # no mere heading
push @lacking, map { "$_ does not say: $words_of{$_}" }
    grep { index($comment_of{$_} // '', $words_of{$_}) < 0 } sort keys %words_of;
print "$_ ($language)\n" for @lacking;
printf "comments: %d declarations in %s, %d findings\n", scalar(keys %place_of), $language,
    scalar(@lacking);
exit(@lacking || !%place_of ? 1 : 0);
