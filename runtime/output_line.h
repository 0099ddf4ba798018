// Composes a listing line straight into the run buffer: one bounds check for
// the whole line instead of one for every field. Where the buffer can't be
// used (an override takes the output, or the line is too long for it) every
// piece goes through qorWrite and its kin, with the same characters.
#pragma once

#include <cstdint>
#include <cstring>

#include "runtime/decimal.h"
#include "runtime/output.h"

// Copies a short text in moves of a fixed size (two overlapping ones up to
// 32 octets), which read and write only its own octets; longer ones by
// memcpy. Names and fields are a few to 30 characters: a call to memcpy
// costs more than the copy.
inline void copyShort(char* to, const char* from, size_t size)
{
    if (size >= 16 && size <= 32) {
        std::memcpy(to, from, 16);
        std::memcpy(to + size - 16, from + size - 16, 16);
    } else if (size >= 8 && size < 16) {
        std::memcpy(to, from, 8);
        std::memcpy(to + size - 8, from + size - 8, 8);
    } else if (size >= 4 && size < 8) {
        std::memcpy(to, from, 4);
        std::memcpy(to + size - 4, from + size - 4, 4);
    } else if (size >= 2 && size < 4) {
        std::memcpy(to, from, 2);
        std::memcpy(to + size - 2, from + size - 2, 2);
    } else if (size == 1) {
        *to = *from;
    } else if (size != 0) {
        std::memcpy(to, from, size);
    }
}

class OutputLine {
public:
    // `most` is an upper bound of the characters the line will get.
    OutputLine(RunContext* context, size_t most) : context_(context)
    {
        if (most <= kLongest) {
            begin_ = qorReserve(context, most + kSlack);
            at_ = begin_;
        }
    }
    ~OutputLine() { finish(); }
    OutputLine(const OutputLine&) = delete;
    OutputLine& operator=(const OutputLine&) = delete;

    // Gives back what the line didn't use; nothing more may be written.
    void finish()
    {
        if (begin_ != nullptr) qorGiveBack(context_, at_);
        begin_ = nullptr;
        at_ = nullptr;
    }

    int text(const char* text, size_t length)
    {
        if (begin_ == nullptr) return qorWrite(context_, text, length);
        copyShort(at_, text, length);
        at_ += length;
        return static_cast<int>(length);
    }
    // A text that can be read for 32 characters from its start, with room
    // for 32 on the line: up to 32 of them in one fixed move.
    int textOf32(const char* text, size_t length)
    {
        if (begin_ == nullptr || length > 32) return this->text(text, length);
        std::memcpy(at_, text, 32);
        at_ += length;
        return static_cast<int>(length);
    }
    int character(char c)
    {
        if (begin_ == nullptr) return qorWrite(context_, &c, 1);
        *at_++ = c;
        return 1;
    }
    // What "%*s" prints for a width: negative widths by their absolute value.
    int blanks(int width)
    {
        if (width < 0) width = -width;
        if (begin_ == nullptr) return qorBlanks(context_, width);
        // Sixteen at a time; the slack behind the line takes the overshoot.
        for (int done = 0; done < width; done += 16) std::memcpy(at_ + done, "                ", 16);
        at_ += width;
        return width;
    }
    int hexDigits(const uint8_t* octets, int32_t digits)
    {
        if (begin_ == nullptr) return qorWriteHexDigits(context_, octets, digits);
        if (digits <= 0) return 0;
        const int32_t pairs = (digits + 1) / 2;
        putHexPairs(at_, octets, pairs);
        at_ += digits;
        return digits;
    }
    int decimal(long value)
    {
        if (begin_ == nullptr) return qorWriteDecimal(context_, value);
        // Whole-word stores: the slack behind the line takes the overshoot.
        char* const from = at_;
        at_ = putSignedDecimal(at_, value);
        return static_cast<int>(at_ - from);
    }
    // Characters made by `make`, a `char* (char* out)` that writes at `out`
    // and returns the end: in place, or in a piece of its own of `kMadeMost`
    // (plus slack) characters at most when the line can't use the buffer.
    static constexpr size_t kMadeMost = 256;
    template <typename Make>
    int made(Make make)
    {
        char piece[kMadeMost + kSlack];
        char* from = begin_ != nullptr ? at_ : piece;
        char* end = make(from);
        if (begin_ == nullptr) return qorWrite(context_, piece, static_cast<size_t>(end - piece));
        at_ = end;
        return static_cast<int>(end - from);
    }
    // An unsigned value behind blanks up to `width`; longer numbers whole.
    int rightAligned(int width, unsigned long value)
    {
        if (begin_ != nullptr && value < 1000 && width >= 1 && width <= 4) {
            // Offsets in a record, depths, lengths: the field from a table.
            const int digits = value < 10 ? 1 : value < 100 ? 2 : 3;
            const int field = digits > width ? digits : width;
            std::memcpy(at_, &kRightAlignedSmall[4 * value + 4 - static_cast<unsigned long>(field)], 4);
            at_ += field;
            return field;
        }
        return rightAlignedWide(width, value);
    }

private:
    // rightAligned beyond the table: any value, any width.
    int rightAlignedWide(int width, unsigned long value);

    static constexpr size_t kSlack = 16;     // room for whole-word stores past the end
    static constexpr size_t kLongest = 16384;  // longer lines go piece by piece

    RunContext* context_;
    char* begin_ = nullptr;
    char* at_ = nullptr;
};
