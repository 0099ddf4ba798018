#include "meaning/oid_naming.h"

#include "oids/dotted_oid.h"
#include "oids/oid_names.h"
#include "runtime/context.h"
#include "runtime/extensions.h"
#include "runtime/output_line.h"
#include "tlv/element.h"

namespace {

constexpr int32_t kObjectIdentifierTag = 6;

}  // namespace

std::string_view oidNameOf(const RunContext* context, const Element& element)
{
    if (context == nullptr || context->extensions == nullptr || context->extensions->oidNames == nullptr) return {};
    if (!element.readable() || element.constructed || element.tagClass != CLASS_UNIVERSAL ||
        element.tagNumber != kObjectIdentifierTag || element.headerOverruns() || element.length <= 0 ||
        element.lengthOverruns()) {
        return {};
    }
    const OctetView contents = element.contents();
    const std::span<const uint8_t> octets(contents.data(), static_cast<size_t>(contents.size()));
    if (!isWellFormedOidContents(octets)) return {};
    return context->extensions->oidNames->find(octets);
}

void printOidName(RunContext* context, const Element& element, bool syntaxLayout)
{
    const std::string_view name = oidNameOf(context, element);
    if (name.empty()) return;
    OutputLine line(context, name.size() + 3);
    line.text(syntaxLayout ? " " : " (", syntaxLayout ? 1 : 2);
    line.text(name.data(), name.size());
    if (!syntaxLayout) line.character(')');
}
