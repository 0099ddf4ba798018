#include "textforms/base64.h"

namespace {

constexpr uint8_t kWhiteSpace = 64;
constexpr uint8_t kPadding = 65;
constexpr uint8_t kOutside = 255;

// The six bits of each character; '+' and '-' both stand for 62, '/' and
// '_' for 63, so one table reads both alphabets.
struct Base64Values {
    uint8_t value[256];
};
constexpr Base64Values kValues = [] {
    Base64Values table{};
    for (auto& value : table.value) value = kOutside;
    for (int i = 0; i < 26; ++i) {
        table.value['A' + i] = static_cast<uint8_t>(i);
        table.value['a' + i] = static_cast<uint8_t>(26 + i);
    }
    for (int i = 0; i < 10; ++i) table.value['0' + i] = static_cast<uint8_t>(52 + i);
    table.value[static_cast<uint8_t>('+')] = 62;
    table.value[static_cast<uint8_t>('-')] = 62;
    table.value[static_cast<uint8_t>('/')] = 63;
    table.value[static_cast<uint8_t>('_')] = 63;
    table.value[static_cast<uint8_t>('=')] = kPadding;
    constexpr char kSpaces[] = " \t\r\n\v\f";
    for (char c : kSpaces) {
        if (c != '\0') table.value[static_cast<uint8_t>(c)] = kWhiteSpace;
    }
    return table;
}();

}  // namespace

bool TextLines::next(const char*& line, size_t& lineLength)
{
    if (at_ >= length_) return false;
    line = text_ + at_;
    size_t end = at_;
    while (end < length_ && text_[end] != '\n') ++end;
    lineLength = end - at_;
    at_ = end < length_ ? end + 1 : end;
    ++number_;
    return true;
}

bool Base64Decoder::take(const char* text, size_t length, long line, TextFaultAt& fault)
{
    for (size_t i = 0; i < length; ++i) {
        const auto character = static_cast<uint8_t>(text[i]);
        const uint8_t value = kValues.value[character];
        if (value == kWhiteSpace) continue;
        if (value == kOutside) {
            fault = {TextFault::BadCharacter, line, character};
            return false;
        }
        if (value == kPadding) {
            // "xx==" and "xxx=": padding stands only behind two or three
            // characters of a group, and never more than fills it.
            ++padding_;
            if (characters_ < 2 || characters_ + padding_ > 4) {
                fault = {TextFault::MisplacedPadding, line, character};
                return false;
            }
            continue;
        }
        if (padding_ != 0) {
            fault = {TextFault::DataAfterPadding, line, character};
            return false;
        }
        lastLine_ = line;
        group_ = group_ << 6 | value;
        if (++characters_ == 4) {
            out_[written_++] = static_cast<uint8_t>(group_ >> 16);
            out_[written_++] = static_cast<uint8_t>(group_ >> 8);
            out_[written_++] = static_cast<uint8_t>(group_);
            characters_ = 0;
            group_ = 0;
        }
    }
    return true;
}

bool Base64Decoder::finish(TextFaultAt& fault)
{
    // The bits below the last whole octet are dropped, as RFC 4648 lets a
    // decoder do.
    switch (characters_) {
        case 1:
            fault = {TextFault::LoneCharacter, lastLine_, 0};
            return false;
        case 2:
            out_[written_++] = static_cast<uint8_t>(group_ >> 4);
            break;
        case 3:
            out_[written_++] = static_cast<uint8_t>(group_ >> 10);
            out_[written_++] = static_cast<uint8_t>(group_ >> 2);
            break;
        default:
            break;
    }
    characters_ = 0;
    group_ = 0;
    return true;
}

TextFaultAt decodeBase64Text(const char* text, size_t length, uint8_t* out, size_t& written)
{
    TextFaultAt fault = {TextFault::None, 0, 0};
    Base64Decoder decoder(out);
    TextLines lines(text, length);
    const char* line = nullptr;
    size_t lineLength = 0;
    while (lines.next(line, lineLength)) {
        if (!decoder.take(line, lineLength, lines.number(), fault)) break;
    }
    if (fault.fault == TextFault::None) decoder.finish(fault);
    written = decoder.written();
    return fault;
}
