#!/usr/bin/perl
# portable_executable.pl exports|imports|symbols FILE - what the file's own headers say, one to a line: the
# names that it exports; those that it imports, whatever library they are from; how many symbols it
# holds. What the GNU tools print of the same differs from one version to the next.
use strict;
use warnings;

sub fail { die "portable_executable.pl: @_\n" }

@ARGV == 2 or fail('usage: portable_executable.pl exports|imports|symbols FILE');
my ($what, $path) = @ARGV;
open(my $file, '<:raw', $path) or fail("$path: $!");
my $bytes = do { local $/; <$file> };

# Fields at an offset in the file; never beyond its end.
sub fields {
    my ($template, $offset) = @_;
    my $length = length(pack($template, (0) x 100));
    $offset >= 0 && $offset + $length <= length($bytes) or fail("$path: nothing at offset $offset");
    return unpack($template, substr($bytes, $offset, $length));
}

length($bytes) > 64 && substr($bytes, 0, 2) eq 'MZ' or fail("$path is no program");
my ($start) = fields('V', 0x3C);
substr($bytes, $start, 4) eq "PE\0\0" or fail("$path has no header");
my ($machine, $count, undef, undef, $symbols, $optional) = fields('v v V V V v', $start + 4);
my ($magic) = fields('v', $start + 24);
$magic == 0x20B or fail("$path is not for 64 bits");
my @sections = map { [ fields('x8 V V V V', $start + 24 + $optional + 40 * $_) ] } 0 .. $count - 1;

# Where an address of the loaded file is in the file.
sub offset {
    my ($address) = @_;
    for (@sections) {
        my (undef, $from, $size, $at) = @$_;
        return $address - $from + $at if $address >= $from && $address < $from + $size;
    }
    fail("$path: address $address is in no section");
}

sub text_at {
    my ($offset) = @_;
    my $end = index($bytes, "\0", $offset);
    $end >= 0 or fail("$path: a name without an end");
    return substr($bytes, $offset, $end - $offset);
}

# Address of a table of the optional header; 0 when there is none.
sub table {
    my ($number) = @_;
    my ($tables) = fields('V', $start + 24 + 108);
    return $number < $tables ? (fields('V', $start + 24 + 112 + 8 * $number))[0] : 0;
}

if ($what eq 'exports') {
    my $table = table(0) or exit;
    my ($names, undef, $list) = fields('V V V', offset($table) + 24);
    print text_at(offset((fields('V', offset($list) + 4 * $_))[0])), "\n" for 0 .. $names - 1;
} elsif ($what eq 'imports') {
    my $table = table(1) or exit;
    for (my $entry = offset($table);; $entry += 20) {
        my ($lookup, undef, undef, $library, $addresses) = fields('V5', $entry);
        last if $library == 0;
        for (my $slot = offset($lookup || $addresses);; $slot += 8) {
            my ($name, $flags) = fields('V V', $slot);
            last if $name == 0 && $flags == 0;
            print $flags & 0x80000000 ? "#$name" : text_at(offset($name) + 2), "\n";
        }
    }
} elsif ($what eq 'symbols') {
    print "$symbols\n";
} else {
    fail("what is '$what'?");
}
