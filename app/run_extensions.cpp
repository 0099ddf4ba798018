#include "app/run_extensions.h"

#include <cstdio>
#include <string>

#include "app/signal.h"
#include "oids/oid_file.h"
#include "runtime/context.h"

RunExtensionsScope::RunExtensionsScope(RunContext* context) : context_(context), saved_(context->extensions) {}

RunExtensionsScope::~RunExtensionsScope()
{
    context_->extensions = saved_;
}

RunExtensions& RunExtensionsScope::settings()
{
    context_->extensions = &settings_;
    return settings_;
}

void RunExtensionsScope::nameOids()
{
    settings().oidNames = &oidNames_;
}

void RunExtensionsScope::loadOidFile(const char* path)
{
    nameOids();
    OidFileError error;
    if (::loadOidFile(path, oidNames_, error) == 0) return;
    const std::string message = "qortlv: " + error.text() + "\n";
    std::fputs(message.c_str(), stderr);
    jumpToTarget(context_, kOidFileStatus);
}
