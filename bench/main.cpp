#include <cstring>
#include <iostream>
#include <string>

#include "device_copy/DeviceCopy.h"
#include "device_copy/Pictures.h"
#include "host/log/LogControl.h"
#include "metadata/MetadataCosts.h"
#include "request/Outstanding.h"
#include "request/WholeRequest.h"
#include "support/Counting.h"
#include "support/Table.h"
#include "support/Timing.h"

/**
 * quen-bench [--counts=FILE] [--benchmark_...]   times the cases and prints the table
 * quen-bench --count [CASES]                     runs cases for a tool that counts
 */
int main(int argc, char** argv) {
    using namespace quenbench;
    Graphics::get();  // registers services before the library fetches them
    quen::host::setLogLevel(quen::host::LogLevel::Silent);
    Cases cases;
    addDeviceCopyCases(cases);
    addMetadataCases(cases);
    addWholeRequestCases(cases);
    addOutstandingCases(cases);

    if (argc > 1 && strcmp(argv[1], "--count") == 0) {
        countCases(std::cout, cases, argc > 2 ? argv[2] : "");
        return 0;
    }
    std::string counts;
    constexpr char kCounts[] = "--counts=";
    if (argc > 1 && strncmp(argv[1], kCounts, strlen(kCounts)) == 0) {
        counts = argv[1] + strlen(kCounts);
        argv[1] = argv[0];
        --argc;
        ++argv;
    }
    Figures const* const figures = timeCases(cases, counts, argc, argv);
    if (figures == nullptr) {
        return 2;
    }
    printTableHead(std::cout);
    printDeviceCopyRows(std::cout, *figures);
    printMetadataRows(std::cout, *figures);
    printWholeRequestRows(std::cout, *figures);
    printOutstandingRows(std::cout, *figures);
    return 0;
}
