// Writes the export tests' sample report as CSV, XLSX and HTML. Under
// Windows (Wine in the tests) the host reads the files back
// (tests/exports/check_exports.sh): libxlsxwriter cross-built for MinGW, its
// temporary files, and a folder named beyond ASCII. Natively its page is what
// scripts/export-screenshot.sh renders.
//
//   hb_export_sample FOLDER     writes FOLDER/Berichte für Kunden/report.*
#include <cstdio>
#include <exception>
#include <filesystem>

#include "../reporting/SampleReport.h"
#include "reporting/CsvExport.h"
#include "reporting/HtmlExport.h"
#include "reporting/XlsxExport.h"

int main(int argc, char** argv) {
    using namespace hb::reporting;
    if (argc != 2) {
        std::fprintf(stderr, "usage: hb_export_sample FOLDER\n");
        return 2;
    }
    try {
        const std::filesystem::path folder =
            std::filesystem::path(argv[1]) / std::filesystem::path(u8"Berichte f\u00FCr Kunden");
        std::filesystem::create_directories(folder);
        const Report report = test::sampleReport();
        const hb::Locale german = test::germanLocale();
        writeCsv(folder / "report.csv", report, german);
        writeXlsx(folder / "report.xlsx", report, hb::Locale::enUS());
        writeXlsx(folder / "report-hm.xlsx",
                  test::sampleReport(hb::reporting::HoursFormat::HoursMinutes), german);
        writeHtml(folder / "report.html", report, hb::Locale::enUS());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "export failed: %s\n", e.what());
        return 1;
    }
    return 0;
}
