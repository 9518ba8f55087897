#include "tools/rba/SheetFont.h"

#include <array>
#include <cstddef>

namespace rb::cli {
namespace {

/// Some letters side by side, a blank column between two.
struct Band {
    std::string_view letters;
    std::array<std::string_view, kGlyphHeight> rows;
};

// clang-format off
constexpr std::array<Band, 6> kBands{{
    {"0123456789", {
        " ###    #    ###   ###     #  #####   ##  #####  ###   ### ",
        "#   #  ##   #   # #   #   ##  #      #        # #   # #   #",
        "#  ##   #       #     #  # #  ####  #        #  #   # #   #",
        "# # #   #      #    ##  #  #      # ####    #    ###   ####",
        "##  #   #     #       # #####     # #   #   #   #   #     #",
        "#   #   #    #    #   #    #  #   # #   #   #   #   #    # ",
        " ###   ###  #####  ###     #   ###   ###    #    ###   ##  ",
        "                                                           "}},
    {"abcdefhilm", {
        "      #               #         ##  #       #    ##        ",
        "      #               #        #  # #             #        ",
        " ###  # ##   ###   ## #  ###   #    # ##   ##     #   ## # ",
        "    # ##  # #   # #  ## #   # ###   ##  #   #     #   # # #",
        " #### #   # #     #   # #####  #    #   #   #     #   # # #",
        "#   # #   # #   # #   # #      #    #   #   #     #   # # #",
        " #### ####   ###   ####  ###   #    #   #  ###   ###  #   #",
        "                                                           "}},
    {"noprstuvwx", {
        "                               #                           ",
        "                               #                           ",
        "# ##   ###  ####  # ##   #### ###   #   # #   # #   # #   #",
        "##  # #   # #   # ##  # #      #    #   # #   # #   #  # # ",
        "#   # #   # #   # #      ###   #    #   # #   # # # #   #  ",
        "#   # #   # #   # #         #  #  # #  ##  # #  # # #  # # ",
        "#   #  ###  ####  #     ####    ##   ## #   #    # #  #   #",
        "            #                                              "}},
    {"ABGLRXYZ", {
        " ###  ####   ###  #     ####  #   # #   # #####",
        "#   # #   # #   # #     #   # #   # #   #     #",
        "#   # #   # #     #     #   #  # #   # #     # ",
        "##### ####  # ### #     ####    #     #     #  ",
        "#   # #   # #   # #     # #    # #    #    #   ",
        "#   # #   # #   # #     #  #  #   #   #   #    ",
        "#   # ####   #### ##### #   # #   #   #   #####",
        "                                               "}},
    {" +-.,_", {
        "                                   ",
        "        #                          ",
        "        #                          ",
        "      ##### #####                  ",
        "        #                          ",
        "        #          ##    ##        ",
        "                   ##    ##        ",
        "                         #    #####"}},
    {"?", {
        "#####", "#   #", "#   #", "#   #", "#   #", "#   #", "#####", "     "}},
}};
// clang-format on

struct Glyph {
    const Band* band;
    std::size_t place;
};

Glyph glyphOf(char letter) {
    for (const Band& band : kBands)
        if (const std::size_t place = band.letters.find(letter); place != std::string_view::npos)
            return {&band, place};
    return {&kBands.back(), 0};
}

}  // namespace

bool hasGlyphDot(char letter, int column, int row) {
    const Glyph glyph = glyphOf(letter);
    const std::size_t dot = glyph.place * (kGlyphWidth + 1) + static_cast<std::size_t>(column);
    return glyph.band->rows[static_cast<std::size_t>(row)][dot] == '#';
}

}  // namespace rb::cli
