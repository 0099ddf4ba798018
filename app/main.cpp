#include "app/entry.h"

int main(int argc, char** argv)
{
    return runEntry(argc, argv, nullptr);
}
