// goals PART FOLDER: one part of the table, by the recordings of a folder.

#include <cstdio>
#include <exception>
#include <map>
#include <string>

#include "Goals.h"

int main(int argc, char** argv)
{
    const std::map<std::string, void (*)(const std::string&)> parts = {
        {"extraction", bench::measureExtraction},
        {"claim", bench::measureClaim},
        {"synchronisation", bench::measureSynchronisation},
        {"hours", bench::measureHours},
        {"far", bench::measureFar},
        {"hundreds", bench::measureHundreds},
        {"minutes", bench::measureMinutes},
        {"many", bench::measureMany},
        {"length", bench::measureLength},
        {"number", bench::measureNumber},
        {"others", bench::measureOthers},
    };
    const auto part = argc == 3 ? parts.find(argv[1]) : parts.end();
    if (part == parts.end()) {
        std::fprintf(stderr, "usage: %s PART FOLDER, part one of:", argv[0]);
        for (const auto& known : parts)
            std::fprintf(stderr, " %s", known.first.c_str());
        std::fprintf(stderr, "\n");
        return 2;
    }
    try {
        part->second(argv[2]);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[1], error.what());
        return 1;
    }
    return 0;
}
