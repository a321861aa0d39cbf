#include "reporting/ReportJob.h"

#include "reporting/Aggregation.h"
#include "reporting/Periods.h"
#include "reporting/TimeRules.h"
#include "settings/cPersonalSettings.h"
#include "settings/modGetDefaultFolders.h"

namespace hb::reporting {

Report runReport(Session& s, CalendarSource& calendar, RecordStore& store,
                 const ReportOptions& options, const LocalCubeWriter& localCube) {
    if (options.period.empty()) throw PeriodError("The period has no day.");
    const RecordRules rules = rulesFromSettings(s);
    const Locale locale = s.platform.userLocale();

    // Everything that can fail before the store is written: reading Outlook,
    // the rates, the billing values. The store's own replacement is one
    // transaction, so a failure anywhere leaves the stored records as they were.
    const std::vector<CalendarEntry> entries = calendar.read(options.period);
    const RateLookup rates(store.entryRates(), rules.personalRate);
    BillingReader billing(s);
    const std::vector<TimeRecord> records =
        makeRecords(entries, rules, options, billing, rates, s.strCurrentUser);
    store.replacePeriod(s.strCurrentUser, options.period, records);

    Report report;
    report.options = options;
    report.user = s.strCurrentUser;
    const auto& lists = s.oPersonalSettings->MetaDataLists;
    for (std::size_t i = 0; i < kReportLists && i < lists.size(); ++i) {
        if (lists[i]) report.listCaptions[i] = lists[i]->Caption;
    }
    if (localCube && s.oPersonalSettings->blnCreateLocalCube) {
        localCube(fncGetLocalCubePath(s, true), s.strCurrentUser, options.period, records,
                  report.listCaptions);
    }
    report.records = store.load(options.allUsers ? Str() : s.strCurrentUser, options.period);
    sortRecords(report.records);
    report.total = aggregate(report.records, options.grouping, locale);
    return report;
}

}  // namespace hb::reporting
