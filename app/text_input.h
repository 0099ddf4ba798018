// PEM and base64 input: the text loaded as a binary file is, then decoded
// into octets that the layouts list as they list a binary file's.
#pragma once

#include <cstdint>
#include <cstdio>
#include <vector>

#include "runtime/buffers.h"
#include "textforms/pem.h"

struct RunContext;

// How the input's octets are given.
enum class InputForm : uint8_t { Binary, Text, Pem, Base64 };

// The result code (and exit status) of a text that doesn't decode.
constexpr int LOAD_TEXT_FORM_FAULT = 80;

// A decoded input: every block's octets one after the other in `octets`;
// base64 gives one block without a label.
struct DecodedInput {
    InputBuffer text;  // the loaded text; the PEM labels point into it
    InputBuffer octets;
    std::vector<PemBlock> blocks;
    TextFaultAt fault;
};

// Loads and decodes; `spare` zero octets follow the last block. Returns a
// load result code, or LOAD_TEXT_FORM_FAULT with `fault` filled.
int loadDecodedInput(RunContext* context, std::FILE* stream, InputForm form, int32_t spare, DecodedInput& input);
void releaseDecodedInput(RunContext* context, DecodedInput& input);

// The octets of a block that +offset,num selects, as loadInput selects them
// in a binary file: LOAD_DONE, LOAD_READ_FAILED for a block without
// octets, LOAD_BAD_OFFSET for an offset at or behind its end.
int selectBlockOctets(const DecodedInput& input, const PemBlock& block, uint32_t offset, uint32_t count,
                      InputBuffer& view);

// Prints the decoding fault of the input `name`.
void printTextFormFault(RunContext* context, InputForm form, const char* name, const TextFaultAt& fault);

// "PEM block #n: label", the line in front of each block's listing.
void printBlockLabel(RunContext* context, const PemBlock& block, int number);

// One line on standard error when a binary input looks like PEM or base64
// text, naming the option that reads it.
void hintAtTextForm(const InputBuffer& buffer);

// The input of -zfixencoding: the octets of the form that
// TLV_PEM_INPUT / TLV_BASE64_INPUT name (every block one after the other),
// or the binary file; buffer.length holds the spare octets on entry.
int loadRepairInput(RunContext* context, std::FILE* stream, InputBuffer& buffer);
