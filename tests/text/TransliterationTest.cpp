// Cyrillic and Latin letters.

#include "support/Printers.h"
#include "support/Text.h"

#include <veltor/utils/Transliteration.h>

#include <gtest/gtest.h>

#include <random>

using namespace veltor::utils;
using veltor::test::u;

TEST(Transliteration, FollowsTheStandards)
{
    const char* const rows[][4] = {
        // Cyrillic, ISO 9, GOST 7.79 system B, passport
        {"Съешь ещё этих мягких французских булок, да выпей чаю",
         "Sʺešʹ eŝë ètih mâgkih francuzskih bulok, da vypej čaû",
         "S``esh` eshhyo e`tix myagkix franczuzskix bulok, da vy`pej chayu",
         "Sieesh eshche etikh miagkikh frantsuzskikh bulok, da vypei chaiu"},
        {"ЩУКА Щука щука Щ Яя", "ŜUKA Ŝuka ŝuka Ŝ Ââ", "SHHUKA Shhuka shhuka Shh Yaya",
         "SHCHUKA Shchuka shchuka Shch Iaia"},
        {"БОРЩ. ОБЪЕЗД цирк ЦЭ цапля", "BORŜ. OBʺEZD cirk CÈ caplâ", "BORSHH. OB``EZD cirk CE` czaplya",
         "BORSHCH. OBIEEZD tsirk TSE tsaplia"},
        {"Київ, Ґонґ; Љубљана 7 km", "Kiïv, G̀ong̀; L̂ubl̂ana 7 km", "Kiїv, Ґonґ; Љubљana 7 km",
         "Kiїv, Ґonґ; Љubљana 7 km"},
    };
    for (const auto& row : rows) {
        const QString text = u(row[0]);
        for (const auto standard : {LatinStandard::Iso9, LatinStandard::Gost779B, LatinStandard::Passport}) {
            const QString latin =
                u(row[1 + static_cast<int>(standard)]).normalized(QString::NormalizationForm_C);
            EXPECT_EQ(toLatin(text, standard), latin);
            EXPECT_EQ(toLatin(text.normalized(QString::NormalizationForm_D), standard), latin);
        }
        EXPECT_FALSE(toCyrillic(u(row[3]), LatinStandard::Passport));
    }
    EXPECT_EQ(*toCyrillic(u("Kon′ ob″ezd, q"), LatinStandard::Iso9), u("Конь объезд, q"));
    EXPECT_EQ(*toCyrillic(u("Caplya, xo`"), LatinStandard::Gost779B),
              u("Цапля, хо`").replace(u("`"), u("ь")));
}

TEST(Transliteration, ComesBackFromTheReversibleOnes)
{
    const QString vowels = u("аеёиоуыэюя");
    const QString consonants = u("бвгджзйклмнпрстфхцчшщ");
    std::mt19937 random(5); // NOLINT
    const auto any = [&random](const QString& letters) {
        return letters.at(int(random() % unsigned(letters.size())));
    };
    for (int run = 0; run < 3000; ++run) {
        QString text;
        for (int word = int(random() % 4); word >= 0; --word) {
            QString letters;
            for (int i = int(random() % 9); i >= 0; --i) {
                letters += random() % 2 ? any(vowels) : any(consonants);
                // Signs stand behind consonants; behind a single capital at a word's end their size is lost.
                if (consonants.contains(letters.at(letters.size() - 1)) && letters.size() > 1 &&
                    random() % 4 == 0) {
                    letters += random() % 2 ? u("ь") : u("ъ");
                }
            }
            const auto size = random() % 3;
            text += size == 0   ? letters
                    : size == 1 ? letters.left(1).toUpper() + letters.mid(1)
                                : letters.toUpper();
            text += any(u(" -.,1"));
        }
        EXPECT_EQ(*toCyrillic(toLatin(text, LatinStandard::Iso9), LatinStandard::Iso9), text);
        const QString latin = toLatin(text, LatinStandard::Gost779B);
        EXPECT_EQ(*toCyrillic(latin, LatinStandard::Gost779B), text) << latin.toStdString();
        for (const QChar unit : latin + toLatin(text, LatinStandard::Passport)) {
            EXPECT_LT(unit.unicode(), 0x80);
        }
    }
}
