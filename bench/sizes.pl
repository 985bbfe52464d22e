#!/usr/bin/perl
# sizes.pl TOOL_PREFIX BUILD_DIR - what tarn.dll is made of: bytes by section, and by object.
#
# Objects come from the linker's map. Our own sources are one object there, being optimised as one
# program; the symbols' line numbers tell them apart.
use strict;
use warnings;

my ($prefix, $build) = @ARGV;
my $dll = "$build/bin/tarn.dll";

sub lines {
    open(my $pipe, '-|', @_) or die "sizes.pl: cannot run $_[0]: $!\n";
    my @lines = <$pipe>;
    close($pipe) or die "sizes.pl: $_[0] failed\n";
    return @lines;
}

sub table {
    my ($title, %bytes) = @_;
    printf "\n%-46s %12s\n", $title, 'bytes';
    printf "%-46s %12d\n", $_, $bytes{$_}
        for sort { $bytes{$b} <=> $bytes{$a} || $a cmp $b } keys %bytes;
}

my %section;
for (lines("${prefix}objdump", '-h', $dll)) {
    $section{$1} = hex $2 if /^\s*\d+\s+(\.\S+)\s+([0-9a-f]+)/;
}
$section{'.bss (in memory only)'} = delete $section{'.bss'} if defined $section{'.bss'};
table('section', %section);

# Pieces of the map: " .text$name  0xaddress  0xsize file", the name on a line of its own if long.
my (%object, $output, $piece);
open(my $map, '<', "$build/tarn.map") or die "sizes.pl: no $build/tarn.map: $!\n";
while (<$map>) {
    last if /^Linker script and memory map/;
}
while (<$map>) {
    if (/^(\.[A-Za-z_]+)/) {
        $output = $1;
    }
    elsif (/^ (\.\S+)\s*$/) {
        $piece = $1;
        next;
    }
    elsif (defined $output && $output !~ /^\.(debug|bss)/ &&
        (/^ \.\S+\s+0x[0-9a-f]+\s+0x([0-9a-f]+) (.+)$/ ||
            defined $piece && /^\s+0x[0-9a-f]+\s+0x([0-9a-f]+) (.+)$/)) {
        my ($bytes, $file) = (hex $1, $2);
        $file =~ s{.*/}{};
        $file =~ s{\.cpp\.obj$}{.cpp};
        $file = 'tarn (all sources, as one program)' if $file =~ /\.ltrans\d*\.o|\.ltrans\.o$/;
        $file = 'imports from ' . $1 . '.dll' if $file =~ /^lib([a-z]+32|msvcrt)\.a\(lib\1/;
        $file = 'linker' if $file eq 'dll stuff';
        $object{$file} += $bytes if $bytes > 0;
    }
    $piece = undef;
}
close($map);
table('object', %object);

my %source;
for (lines("${prefix}nm", '--size-sort', '-S', '-l', "$dll.debug")) {
    my ($bytes, $type, $file) = /^[0-9a-f]+ ([0-9a-f]+) (\S) \S+\t(\S+):\d+$/ or next;
    next if $type =~ /^[bBN]$/;
    $file =~ s{^.*?((?:frame|framework|runtime|install|ui|validate)/(?:[^/]+/)?[^/]+)$}{$1} or next;
    $source{$file} += hex $bytes;
}
table('source (functions and named constants)', %source);
