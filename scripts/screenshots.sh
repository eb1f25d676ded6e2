#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
# screenshots.sh: installs what is missing, builds, opens the panel on a display that nobody sees, and
# makes the pictures of the documents, docs/images/*.png; further ones, at other resolutions, in
# German, in dark colours and from right to left, are left in build/screenshots.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

require "${build_needs[@]}" "${wine_needs[@]}" "${display_needs[@]}"
build release KORA4Panel panel_test
pictures=$root/build/screenshots
rm -rf "$pictures"
mkdir -p "$pictures" "$root/docs/images"
cd "$pictures"
"$root/scripts/with-display.sh" "$root/build/screenshots-wine" \
  "$root/build/release/bin/panel_test.exe" --gtest_brief=1 --gtest_filter='PanelLook.*' ||
  die "the panel does not look as it should; the messages above say where."

# A picture of 32 bits a pixel, the upper row first, as the tests write it.
to_png() {
  perl -MCompress::Zlib -e '
    local $/;
    open(my $in, "<:raw", $ARGV[0]) or die "$ARGV[0]: $!\n";
    my $file = <$in>;
    my ($start, $width, $height) = unpack("x10 V x4 V l<", $file);
    $height = -$height;
    my $rows = "";
    for my $y (0 .. $height - 1) {
        my $row = substr($file, $start + $y * $width * 4, $width * 4);
        $rows .= "\0" . join("", map { chr($_ >> 16 & 255) . chr($_ >> 8 & 255) . chr($_ & 255) } unpack("V*", $row));
    }
    my $chunk = sub { pack("N", length $_[1]) . $_[0] . $_[1] . pack("N", crc32($_[0] . $_[1])) };
    open(my $out, ">:raw", $ARGV[1]) or die "$ARGV[1]: $!\n";
    print $out "\x89PNG\r\n\x1a\n", $chunk->("IHDR", pack("NNCCCCC", $width, $height, 8, 2, 0, 0, 0)),
        $chunk->("IDAT", compress($rows, 9)), $chunk->("IEND", "");
  ' "$1" "$2"
}
for picture in *.bmp; do
  to_png "$picture" "${picture%.bmp}.png"
  rm "$picture"
done
cp panel-levels.png "$root/docs/images/panel.png"
ls -l "$root/docs/images/panel.png" ./*.png
