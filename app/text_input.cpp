#include "app/text_input.h"

#include <cstdio>
#include <cstring>

#include "app/input.h"
#include "runtime/context.h"
#include "runtime/output.h"
#include "runtime/services.h"
#include "textforms/base64.h"

namespace {

constexpr const char* kFaultTexts[] = {
    "",
    "%s is not a base64 character",
    "'=' stands where no padding can",
    "base64 goes on behind its padding",
    "the base64 text ends one character into a group of four",
    "the block begun on this line has no END line",
    "no line begins a block with '-----BEGIN '",
};

// A character as a message shows it: 'c', or its octet in hexadecimal.
void characterText(uint8_t character, char (&text)[8])
{
    if (character > 0x20 && character < 0x7F) {
        text[0] = '\'';
        text[1] = static_cast<char>(character);
        text[2] = '\'';
        text[3] = '\0';
    } else {
        const char* pair = hexPair(character);
        const char octet[] = {'0', 'x', pair[0], pair[1], '\0'};
        std::memcpy(text, octet, sizeof octet);
    }
}

// The look of a text form at the start of a binary input: 1 PEM, 2 base64,
// 0 neither. Base64 text is only that: its alphabets, padding and white
// space, and at least one whole octet's worth of characters.
int textFormLook(const uint8_t* data, int32_t length)
{
    constexpr char kBegin[] = "-----BEGIN ";
    if (length >= static_cast<int32_t>(sizeof kBegin - 1) && std::memcmp(data, kBegin, sizeof kBegin - 1) == 0) {
        return 1;
    }
    int32_t characters = 0;
    for (int32_t i = 0; i < length; ++i) {
        const uint8_t c = data[i];
        const bool letter = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
        const bool sign = c == '+' || c == '/' || c == '-' || c == '_' || c == '=';
        const bool space = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (!letter && !sign && !space) return 0;
        if (letter || (sign && c != '=')) ++characters;
    }
    return characters >= 4 ? 2 : 0;
}

}  // namespace

int loadDecodedInput(RunContext* context, std::FILE* stream, InputForm form, int32_t spare, DecodedInput& input)
{
    input.text.length = 0;  // the text is read as a binary file: mapped where it can be
    const int loaded = loadInput(context, stream, 0, 0, input.text);
    if (loaded != LOAD_DONE) return loaded;
    // Base64 never gives more octets than it has characters.
    const size_t room = static_cast<size_t>(input.text.length) + static_cast<size_t>(spare);
    auto* octets = static_cast<uint8_t*>(qorAlloc(context, room));
    if (octets == nullptr) return LOAD_NO_MEMORY;
    input.octets = {0, octets};
    const auto* text = reinterpret_cast<const char*>(input.text.data);
    const auto length = static_cast<size_t>(input.text.length);
    size_t written = 0;
    if (form == InputForm::Pem) {
        input.fault = decodePemText(text, length, octets, input.blocks);
        if (!input.blocks.empty()) written = input.blocks.back().octetStart + input.blocks.back().octetLength;
    } else {
        input.fault = decodeBase64Text(text, length, octets, written);
        input.blocks.push_back({nullptr, 0, 0, written, 1});
    }
    if (input.fault.fault != TextFault::None) return LOAD_TEXT_FORM_FAULT;
    std::memset(octets + written, 0, static_cast<size_t>(spare));
    input.octets.length = static_cast<int32_t>(written) + spare;
    return LOAD_DONE;
}

void releaseDecodedInput(RunContext* context, DecodedInput& input)
{
    releaseInput(context, input.octets);
    releaseInput(context, input.text);
    input.blocks.clear();
}

int selectBlockOctets(const DecodedInput& input, const PemBlock& block, uint32_t offset, uint32_t count,
                      InputBuffer& view)
{
    if (block.octetLength == 0) return LOAD_READ_FAILED;
    if (offset >= block.octetLength) return LOAD_BAD_OFFSET;
    size_t want = block.octetLength - offset;
    if (count != 0 && count < want) want = count;
    view = {static_cast<int32_t>(want), input.octets.data + block.octetStart + offset};
    return LOAD_DONE;
}

void printTextFormFault(RunContext* context, InputForm form, const char* name, const TextFaultAt& fault)
{
    const char* formName = form == InputForm::Pem ? "PEM" : "base64";
    char character[8] = "";
    characterText(fault.character, character);
    char detail[96];
    std::snprintf(detail, sizeof detail, kFaultTexts[static_cast<int>(fault.fault)], character);
    if (fault.line == 0) {
        qorPrint(context, "Error decoding %s input file, %s: %s.", formName, name, detail);
    } else {
        qorPrint(context, "Error decoding %s input file, %s, line %ld: %s.", formName, name, fault.line, detail);
    }
}

void printBlockLabel(RunContext* context, const PemBlock& block, int number)
{
    // Between two listings stand the two line ends that end a run.
    if (number > 1) qorWrite(context, "\n\n", 2);
    qorPrint(context, "PEM block #%d: %.*s\n", number, static_cast<int>(block.labelLength), block.label);
}

void hintAtTextForm(const InputBuffer& buffer)
{
    const int look = buffer.data != nullptr ? textFormLook(buffer.data, buffer.length) : 0;
    if (look == 1) std::fputs("qortlv: the input looks like PEM text; -pem decodes it.\n", stderr);
    if (look == 2) std::fputs("qortlv: the input looks like base64 text; -base64 decodes it.\n", stderr);
}

int loadRepairInput(RunContext* context, std::FILE* stream, InputBuffer& buffer)
{
    const uint32_t flags = context->toolFlags;
    if ((flags & (TLV_PEM_INPUT | TLV_BASE64_INPUT)) == 0) return loadInput(context, stream, 0, 0, buffer);
    const int32_t spare = buffer.length;
    DecodedInput input{};
    const InputForm form = (flags & TLV_PEM_INPUT) != 0 ? InputForm::Pem : InputForm::Base64;
    int result = loadDecodedInput(context, stream, form, spare, input);
    if (result == LOAD_DONE) {
        buffer = input.octets;
        input.octets = {0, nullptr};
    }
    releaseDecodedInput(context, input);
    return result;
}
