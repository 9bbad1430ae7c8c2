#include "demo/Lettering.h"

#include <iterator>

namespace quen::reprocess {
namespace {

/**
 * A letter on a grid: capitals reach from row 0 to the base line in row 8, small letters begin in
 * row 3, tails end in row 11. Strokes are chains of points, each a column and a row as hexadecimal
 * digits, with a blank between two strokes; one of a single place is a dot.
 */
struct Letter {
    char character;
    int width;  ///< columns
    char const* strokes;
};

constexpr int kBaseLine = 8;
constexpr int kGap = 2;    // columns between letters
constexpr int kBlank = 3;  // columns of a character without strokes

constexpr Letter kLetters[] = {
        {'T', 6, "0060 3038"},
        {'a', 4, "4433130407183847 4348"},
        {'b', 4, "0008 0413334447381807"},
        {'c', 4, "4433130407183847"},
        {'d', 4, "4433130407183847 4048"},
        {'e', 4, "06464433130407183847"},
        {'f', 4, "40302128 0343"},
        {'g', 4, "4433130407183847 434a3b1b0a"},
        {'h', 4, "0008 0513334448"},
        {'i', 0, "0308 0101"},
        {'j', 2, "232a1b0b 2121"},
        {'k', 3, "0008 3306 1538"},
        {'l', 1, "000718"},
        {'m', 6, "0308 0513233438 3543536468"},
        {'n', 4, "0308 0513334448"},
        {'o', 4, "133344473818070413"},
        {'p', 4, "030b 0413334447381807"},
        {'q', 4, "4433130407183847 434b"},
        {'r', 3, "0308 051333"},
        {'s', 4, "44331304054647381807"},
        {'t', 3, "11172838 0333"},
        {'u', 4, "0307183847 4348"},
        {'v', 4, "032843"},
        {'w', 6, "0318345863"},
        {'x', 4, "0348 4308"},
        {'y', 4, "0328 431b0b"},
        {'z', 4, "03430848"},
        {'0', 4, "103041473818070110"},
        {'1', 4, "022028 0848"},
        {'2', 4, "01103041430848"},
        {'3', 4, "0110304143344547381807 1434"},
        {'4', 4, "38300646"},
        {'5', 4, "400003334447381807"},
        {'6', 4, "4130100107183847453405"},
        {'7', 4, "004018"},
        {'8', 4, "14030110304143341405071838474534"},
        {'9', 4, "0718384741301001031443"},
};

int digit(char hexadecimal) {
    return hexadecimal <= '9' ? hexadecimal - '0' : hexadecimal - 'a' + 10;
}

/** Draws the strokes of a letter, whose grid's origin and step are given. */
void drawLetter(Canvas& canvas, Letter const& letter, double x, double y, double step,
                double thickness, Colour const& ink) {
    char const* at = letter.strokes;
    while (*at != '\0') {
        char const* const from = at;
        at += 2;
        bool const endsStroke = *at == ' ' || *at == '\0';
        if (!endsStroke) {
            canvas.drawLine(x + digit(from[0]) * step, y + digit(from[1]) * step,
                            x + digit(at[0]) * step, y + digit(at[1]) * step, thickness, ink);
        } else if (*at == ' ') {
            ++at;
        }
    }
}

}  // namespace

void drawText(Canvas& canvas, std::string_view text, double x, double y, double height,
              double thickness, Colour const& ink) {
    double const step = height / kBaseLine;
    for (char const character : text) {
        auto const* const letter =
                std::find_if(std::begin(kLetters), std::end(kLetters),
                             [&](Letter const& one) { return one.character == character; });
        bool const isDrawn = letter != std::end(kLetters);
        if (isDrawn) {
            drawLetter(canvas, *letter, x, y - height, step, thickness, ink);
        }
        x += ((isDrawn ? letter->width : kBlank) + kGap) * step;
    }
}

}  // namespace quen::reprocess
