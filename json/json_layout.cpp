#include "json/json_layout.h"

#include <optional>
#include <string>

#include "app/signal.h"
#include "diagnose/diagnose.h"
#include "json/error_capture.h"
#include "json/json_element.h"
#include "json/json_text.h"
#include "meaning/encapsulation.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output.h"
#include "tagmap/tag_walk.h"
#include "tlv/element.h"
#include "tlv/end_cache.h"
#include "tlv/reader.h"
#include "tlv/walker.h"

namespace {

// Clears the print override (which sends the run's other texts to standard
// error under -json) while the layout writes its lines, then puts it back.
class ListingOutput {
public:
    explicit ListingOutput(RunContext* context) : context_(context), saved_(context->printOverride)
    {
        context->printOverride = nullptr;
    }
    ~ListingOutput() { context_->printOverride = saved_; }
    ListingOutput(const ListingOutput&) = delete;
    ListingOutput& operator=(const ListingOutput&) = delete;

private:
    RunContext* context_;
    PrintOverride saved_;
};

// One level of the walk: the element it stands at and what the walk knows
// of it, as the hexadecimal layout's walk keeps them on its frames.
struct Level {
    const uint8_t* element = nullptr;
    int32_t count = 0;  // octets from `element` to the end of the enclosing contents
    Element read;
    const uint8_t* inside = nullptr;  // first contents octet, when the walk goes in
    int32_t contentsLength = 0;
    bool indefinite = false;
    bool first = true;       // no element of this level written yet
    bool open = false;       // the element's object is open
    bool arrayOpen = false;  // its "elements" or "encapsulated" array is open
};

class JsonWalk {
public:
    JsonWalk(RunContext* context, const RecordStretch& stretch)
        : context_(context),
          base_(stretch.data),
          origin_(stretch.origin + stretch.offset),
          probe_(stretch.probe),
          recordNumber_(stretch.recordsBefore),
          errors_(context)
    {
        const RunExtensions* extensions = context->extensions;
        if (extensions != nullptr && extensions->tagMap != nullptr && !extensions->tagMap->empty()) {
            tags_.emplace(*extensions->tagMap);
        }
    }

    // Walks `count` octets; false when the listing ended before their end.
    bool run(int32_t count)
    {
        try {
            walk(count);
            return levels_[0].count == 0;
        } catch (const ToolJump& jump) {
            closeAfterJump(jump.value);
            throw;
        }
    }

private:
    int64_t offsetOf(const uint8_t* octets) const { return origin_ + (octets - base_); }

    void walk(int32_t count);
    bool startRecord(Level& level);
    void writeHeaderObject(const char* kind, OctetView octets);
    void skipPaddingOctets(Level& level);
    // Reads the element `level` stands at; true when an element of its
    // level stands in front of it (a comma goes first).
    bool openElement(Level& level, int depth);
    void enterContents(Level& level, int depth, int& next);
    void enterEncapsulated(Level& level, int depth, int& next);
    void openArray(Level& level, int depth, const uint8_t* inside, int32_t count);
    void closeElement(Level& level);
    void closeRecord();
    void closeAfterJump(int code);
    const JsonField* fieldOf(const Level& level, int depth);

    RunContext* context_;
    const uint8_t* base_;
    int64_t origin_;
    CdrProbe probe_;
    long recordNumber_;
    ErrorCapture errors_;
    bool recordOpen_ = false;
    int depth_ = 0;
    Level levels_[MAX_WALK_DEPTH];
    // -tags: the map's node of each open level, a record's at level 0; the
    // elements a string encapsulates (-dig) go on below the string's node.
    std::optional<TagWalk> tags_;
    JsonField field_ = {nullptr, nullptr};
    RisingNumber offsets_;  // the elements' offsets
};

// The map's node of the element `level` stands at; null without -tags.
const JsonField* JsonWalk::fieldOf(const Level& level, int depth)
{
    if (!tags_) return nullptr;
    field_.map = &tags_->map();
    field_.node = tags_->enter(depth, level.read.tagClass, level.read.tagNumber);
    return &field_;
}

// The CDR file header, and padding, are objects of their own kinds.
void JsonWalk::writeHeaderObject(const char* kind, OctetView octets)
{
    writeJsonLiteral(context_, "{\"kind\":");
    writeJsonString(context_, kind, std::char_traits<char>::length(kind));
    writeJsonLiteral(context_, ",\"offset\":");
    writeJsonNumber(context_, offsetOf(octets.data()));
    writeJsonLiteral(context_, ",\"length\":");
    writeJsonNumber(context_, octets.size());
    writeJsonLiteral(context_, ",\"hex\":");
    writeJsonHex(context_, octets);
    writeJsonLiteral(context_, "}\n");
}

// Fill octets between records (-pad), skipped as the listing skips them.
void JsonWalk::skipPaddingOctets(Level& level)
{
    uint8_t pad = 0;
    if (!padByteOf(context_, pad)) return;
    const int32_t skipped = OctetView(level.element, level.count).spanOf(pad);
    if (skipped == 0) return;
    writeHeaderObject("padding", OctetView(level.element, skipped));
    level.element += skipped;
    level.count -= skipped;
}

// What stands in front of a record: on the first, the CDR file header and
// its record header; padding where there is no file header; on the later
// ones, their record headers. Opens the record's object; false when the
// input ends first.
bool JsonWalk::startRecord(Level& level)
{
    ++recordNumber_;
    OctetView recordHeader;
    auto take = [&](int32_t length, OctetView& octets) {
        if (length <= 0 || level.count <= length) return false;
        octets = OctetView(level.element, length);
        level.element += length;
        level.count -= length;
        return true;
    };
    if (recordNumber_ == 1) {
        OctetView fileHeader;
        if (take(probe_.fileHeaderLength, fileHeader)) writeHeaderObject("file_header", fileHeader);
        take(probe_.recordHeaderLength, recordHeader);
    }
    if (probe_.fileHeaderLength == 0) {
        const int32_t before = level.count;
        skipPaddingOctets(level);
        if (level.count != before && level.count == 0) return false;
    }
    if (recordNumber_ >= 2) take(probe_.recordHeaderLength, recordHeader);

    writeJsonLiteral(context_, "{\"kind\":\"record\",\"record\":");
    writeJsonNumber(context_, recordNumber_);
    writeJsonLiteral(context_, ",\"offset\":");
    writeJsonNumber(context_, offsetOf(level.element));
    if (!recordHeader.empty()) {
        writeJsonLiteral(context_, ",\"record_header\":");
        writeJsonHex(context_, recordHeader);
    }
    writeJsonLiteral(context_, ",\"element\":");
    recordOpen_ = true;
    return true;
}

bool JsonWalk::openElement(Level& level, int depth)
{
    const bool sibling = depth > 0 && !level.first;
    level.first = false;
    readElementInto(level.read, level.element, level.count);
    level.open = true;
    level.inside = nullptr;
    level.arrayOpen = false;
    return sibling;
}

void JsonWalk::closeElement(Level& level)
{
    if (level.arrayOpen) writeJsonLiteral(context_, "]");
    level.arrayOpen = false;
    errors_.writeErrors();
    writeJsonLiteral(context_, "}");
    level.open = false;
}

void JsonWalk::closeRecord()
{
    writeJsonLiteral(context_, "}\n");
    recordOpen_ = false;
    qorRecordDone(context_, levels_[0].element);
}

// Opens the level below `level` on `count` octets at `inside`, whose array
// the caller has begun.
void JsonWalk::openArray(Level& level, int depth, const uint8_t* inside, int32_t count)
{
    level.arrayOpen = true;
    Level& child = levels_[depth + 1];
    child.element = inside;
    child.count = count;
    child.first = true;
}

// Goes into a constructed element as the listing does: its contents up to
// the end-of-contents or the length, the deepest level not at all. Sets
// `next` to the level the walk goes on with.
void JsonWalk::enterContents(Level& level, int depth, int& next)
{
    int32_t inner = level.count;
    level.inside = firstInsideOf(context_, level.read, inner);
    level.contentsLength = inner;
    next = depth;
    if (!level.read.constructed) {
        enterEncapsulated(level, depth, next);
        return;
    }
    if (level.inside == nullptr) {
        writeJsonLiteral(context_, ",\"elements\":[]");
        return;
    }
    if (depth + 1 >= MAX_WALK_DEPTH) {
        // Nested deeper than the walk goes: the contents as they stand.
        writeJsonLiteral(context_, ",\"too_deep\":true");
        if (writeLimitedHex(context_, OctetView(level.inside, inner))) {
            writeJsonLiteral(context_, ",\"truncated\":true");
        }
        return;
    }
    writeJsonLiteral(context_, ",\"elements\":[");
    openArray(level, depth, level.inside, inner);
    next = depth + 1;
}

// -dig: a string whose contents are BER keeps its "hex" and lists them as
// "encapsulated" elements, walked as a constructed element's are. Only
// contents that fit within the walk's depth pass, so none is too deep.
void JsonWalk::enterEncapsulated(Level& level, int depth, int& next)
{
    if (context_->extensions == nullptr || !context_->extensions->digEncapsulated) return;
    const OctetView dug = encapsulatedContents(context_, level.read, MAX_WALK_DEPTH - 1 - depth);
    if (dug.empty()) return;
    writeJsonLiteral(context_, ",\"encapsulated\":[");
    openArray(level, depth, dug.data(), dug.size());
    next = depth + 1;
}

void JsonWalk::walk(int32_t count)
{
    levels_[0].count = count;
    if (count <= 0) return;
    levels_[0].element = base_;
    levels_[0].count = count;
    int depth = 0;
    bool atStart = true;  // the level stands at an element not yet read
    while (true) {
        depth_ = depth;
        Level& level = levels_[depth];
        if (atStart) {
            if (depth == 0 && !startRecord(level)) return;
            const bool sibling = openElement(level, depth);
            countElement(context_, depth == 0);
            offsets_.set(offsetOf(level.element));
            const int opened = writeElementOpening(context_, errors_, level.read, offsets_, sibling,
                                                   level.indefinite, fieldOf(level, depth));
            if (opened == kLevelEnds) {
                // The level ends at this element, as the listing's does.
                closeElement(level);
                if (depth == 0) {
                    closeRecord();
                    return;
                }
                --depth;
                atStart = false;
                continue;
            }
            if (opened == kObjectClosed) {
                level.open = false;
            } else {
                int deeper = depth;
                enterContents(level, depth, deeper);
                if (deeper != depth) {
                    depth = deeper;
                    continue;
                }
            }
        }
        // Behind the element's contents: its end-of-contents, then the step
        // to the next element, whose faults are the element's.
        if (level.arrayOpen) writeJsonLiteral(context_, "]");
        level.arrayOpen = false;
        if (level.indefinite && level.inside != nullptr) {
            endOfContentsFollows(context_, level.inside + level.contentsLength);
        }
        const uint8_t* next = nextElementOf(context_, level.read, level.count);
        if (level.open) closeElement(level);
        if (depth == 0) closeRecord();
        if (next == nullptr || level.count == 0) {
            if (depth == 0) return;
            --depth;
            atStart = false;
            continue;
        }
        level.element = next;
        atStart = true;
    }
}

// A fatal fault ends the run inside the walk: the objects still open are
// closed, the innermost with the fault, so every line stays valid JSON.
void JsonWalk::closeAfterJump(int code)
{
    if (!errors_.heardEnding()) errors_.addUnreported(code);
    for (int depth = depth_; depth >= 0; --depth) {
        Level& level = levels_[depth];
        if (level.arrayOpen) writeJsonLiteral(context_, "]");
        level.arrayOpen = false;
        if (level.open) closeElement(level);
    }
    if (recordOpen_) closeRecord();
}

}  // namespace

void printJsonLayout(RunContext* context, InputBuffer& buffer)
{
    listJsonStretch(context, wholeInputStretch(context, buffer, true));
}

bool listJsonStretch(RunContext* context, const RecordStretch& stretch)
{
    ListingOutput output(context);
    EndCacheScope ends(context);
    JsonWalk walk(context, stretch);
    return walk.run(stretch.length);
}
