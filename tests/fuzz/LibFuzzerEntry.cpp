// The entry that libFuzzer calls; built once a target, whose name is PAGESTACK_FUZZ_TARGET.

#include "tests/fuzz/FuzzTargets.h"

#include <QLoggingCategory>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    QLoggingCategory::setFilterRules(QStringLiteral("*=false")); // files are damaged, of course
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    pagestack::PAGESTACK_FUZZ_TARGET({ data, size });
    return 0;
}
