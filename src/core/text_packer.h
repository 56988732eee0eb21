#pragma once
/// Texts of a constant table as places in one text. In a program that is loaded anywhere a pointer
/// takes 32 bytes, with the note that it has to be adjusted; a place takes two.

#include <cstddef>
#include <cstdint>

/// Collects texts while the program is compiled, each once.
struct text_packer {
    static constexpr size_t texts_max = 400;

    char text[8192] = {};
    uint16_t size = 1; ///< the first is the place of no text
    uint16_t places[texts_max] = {};
    size_t count = 0;

    /// @return the text's place; 0 for a null
    constexpr uint16_t add(const char *added) {
        if (added == nullptr)
            return 0;
        for (size_t i = 0; i < count; ++i)
            if (is_same(text + places[i], added))
                return places[i];
        const uint16_t place = size;
        do
            text[size++] = *added;
        while (*added++ != '\0');
        places[count++] = place;
        return place;
    }

private:
    static constexpr bool is_same(const char *one, const char *other) {
        while (*one == *other && *one != '\0') {
            ++one;
            ++other;
        }
        return *one == *other;
    }
};

/// What was collected, in as much room as it takes.
template <size_t Size>
struct packed_texts {
    char text[Size] = {};

    constexpr explicit packed_texts(const text_packer &from) {
        for (size_t i = 0; i < Size; ++i)
            text[i] = from.text[i];
    }

    /// @return the text at a place, or null
    constexpr const char *at(uint16_t place) const { return place == 0 ? nullptr : text + place; }
};
