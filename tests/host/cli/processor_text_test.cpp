// The lines about a processor.

#include "host/cli/processor_text.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tavo {
namespace {

ProcessorInfo SomeProcessor() {
    ProcessorInfo info;
    strcpy(info.vendor, "GenuineIntel");
    strcpy(info.name, "Intel Pentium III Processor");
    info.family = 6;
    info.model = 8;
    info.stepping = 3;
    info.hasMmx = true;
    info.hasSse = true;
    info.clockMhz = 733;
    info.logicalPerPackage = 1;
    info.physicalCount = 2;
    info.hyperThreadingStatus = 0;
    info.identified = true;
    return info;
}

TEST(ProcessorText, HasALineForEverythingKnown) {
    const std::wstring text = ProcessorText(SomeProcessor(), 0, 0);
    EXPECT_EQ(text,
              L"Processor         Intel Pentium III Processor\n"
              L"Vendor            GenuineIntel\n"
              L"Signature         family 6, model 8, stepping 3\n"
              L"Features          MMX, SSE\n"
              L"Clock             733 MHz\n"
              L"Processors        1 logical in each of 2 physical; "
              L"HyperThreading technology not capable\n"
              L"Level             0 (portable code only)\n"
              L"Speed class       0 (AUTO: bi-linear)\n"
              L"Row operations    portable\n");
}

TEST(ProcessorText, SaysWhatIsNotKnown) {
    ProcessorInfo info = SomeProcessor();
    info.name[0] = 0;
    info.hasMmx = info.hasSse = false;
    info.clockMhz = 0;
    info.physicalCount = -1;
    const std::wstring text = ProcessorText(info, 0, -2);
    EXPECT_NE(text.find(L"without a name"), std::wstring::npos);
    EXPECT_NE(text.find(L"none"), std::wstring::npos);
    EXPECT_NE(text.find(L"not measured"), std::wstring::npos);
    EXPECT_NE(text.find(L"an unknown number of physical"), std::wstring::npos);
    EXPECT_NE(text.find(L"-2 (AUTO: nearest neighbor)"), std::wstring::npos);
}

TEST(ProcessorText, OfNoProcessorIsShort) {
    EXPECT_EQ(ProcessorText(ProcessorInfo{}, 0, -2),
              L"Processor         not identified\n"
              L"Row operations    portable\n");
}

TEST(ProcessorText, OfThisProcessorNamesItsOperations) {
    const std::wstring text = ThisProcessorText();
    EXPECT_NE(text.find(L"Row operations"), std::wstring::npos) << text.size();
}

}  // namespace
}  // namespace tavo
