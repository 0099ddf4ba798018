#include <csignal>

#include "app/entry.h"

int main(int argc, char** argv)
{
    // A reader that closes standard output early (`qortlv x.ber | head`)
    // ends the run quietly, as it ends other command-line tools, even when
    // the parent left SIGPIPE ignored or blocked.
    std::signal(SIGPIPE, SIG_DFL);
    sigset_t pipeSignal;
    sigemptyset(&pipeSignal);
    sigaddset(&pipeSignal, SIGPIPE);
    sigprocmask(SIG_UNBLOCK, &pipeSignal, nullptr);
    return runEntry(argc, argv, nullptr);
}
