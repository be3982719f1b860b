#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct _FcPattern;
struct _FcFontSet;

/// The fonts of the system that suit a wish, best first, by the library Fontconfig, which is looked
/// for at run time. Interface thread.
class FontChoice {
public:
    struct Wish {
        std::string family;
        double deviceSize = 0; ///< pixels
        bool bold = false;
        bool turned = false; ///< a quarter, so that it reads from the bottom to the top
    };

    static bool possible(); ///< the library is there
    explicit FontChoice(const Wish& wish);
    ~FontChoice();
    FontChoice(const FontChoice&) = delete;
    FontChoice& operator=(const FontChoice&) = delete;

    /// The best font, for the caller; null when there is none.
    _FcPattern* best() const;
    /// The number of the best font that has a character, -1 if none has.
    int numberFor(uint32_t character);
    _FcPattern* numbered(int number) const; ///< for the caller

private:
    _FcPattern* request;
    _FcFontSet* sorted = nullptr; ///< made when it is first needed, as it takes a while
};

/// The characters of a text in the order in which they are shown, from the left: what is written
/// from right to left is turned round and its letters are joined, by the library FriBidi, where the
/// system has it.
std::vector<uint32_t> shownCharacters(std::string_view text);
