#pragma once
// What the add-in's billing controls show and do, whichever surface shows
// them (the command-bar toolbar of Outlook 2000 to 2007, the calendar's
// ribbon group from Outlook 2010 on): the metadata lists and their
// captions, the values an appointment carries, a pick written into it, and
// the Report, Settings and Statistics commands. It knows no control: each
// surface reads it and hands it the user's choices. Nothing here traps
// errors; the surface that calls reports them under its own procedure's
// name.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "common/Object.h"
#include "common/Session.h"

namespace hb {

class cMarking;
class cPersonalSettings;

class BillingModel {
  public:
    explicit BillingModel(Session& s) : s_(s) {}

    // ---- the lists ----
    // The session's settings (91 when there are none).
    cPersonalSettings& settings() const;
    // Takes the lists (captions and entries) from `own` instead of the
    // session's settings: the task pane shows the lists of the settings
    // text its host hands it. Nothing else follows `own`: what a pick
    // writes still follows the session's settings. Null: the session's.
    void showListsOf(const cPersonalSettings* own) { lists_ = own; }
    // The lists whose values the controls show and write (at most three);
    // the values of later lists are carried through untouched.
    std::size_t shownLists() const;
    // Whether list n (0-based) gets a control filled: lists 1 and 2 need a
    // caption to be shown.
    bool listFilled(std::size_t n) const;
    const Str& caption(std::size_t n) const;
    std::size_t entryCount(std::size_t n) const;
    // Entry i of list n, in the list's order (the order the user keeps).
    const Str& entry(std::size_t n, std::size_t i) const;
    // Every entry of list n, in the list's order.
    std::vector<Str> entries(std::size_t n) const;
    // The position of a value in list n (letter case ignored, as the lists
    // match names); -1 when it is not an entry.
    std::int32_t indexOf(std::size_t n, const Str& value) const;
    // Changes whenever the lists may have changed (a load of the settings).
    std::uint64_t generation() const;
    // Reads the settings again when the settings program (or an import)
    // wrote them since they were read, tracing `trace` first when given;
    // true when they were read again.
    bool refreshSettings(const Str& trace = {});
    // Whether the Statistics command is offered.
    bool statisticsShown() const;

    // ---- one appointment ----
    // The billing values an item carries: an exception or occurrence of a
    // recurring series carries them in its series.
    std::shared_ptr<cMarking> valuesOf(const Variant& item);
    // Whether an item's billing values live in its series: it is an
    // exception or an occurrence of a recurring series. Raises.
    bool carriedBySeries(const Variant& item) const;
    // Writes a choice into an item: only the billing values in its
    // Categories are replaced (the user's own categories and later lists'
    // values stay), the subject follows when the settings say so and it is
    // empty or the add-in's, and the item is saved unless it is open in an
    // appointment window (the user saves it there). An occurrence's choice
    // goes into its series, which is saved. What the item refuses stays as
    // it was; only a choice with no value at all is not written.
    void write(const Variant& item, cMarking& choice, bool inInspector);
    // The subject of an item written from its billing values (the user's
    // own subject is kept). Raises.
    void writeSubject(const Variant& item);

    // The steps of a write, for a surface that takes them one by one with
    // errors ignored line by line (the task pane). Each raises.
    // Replaces the billing values of the first `count` lists in the
    // target's Categories by the choice's.
    void mergeChoice(const Variant& target, cMarking& choice, std::size_t count) const;
    // Whether the subject may be written: it is empty or the add-in's.
    bool subjectIsOurs(const Variant& item) const;
    // The subject made of the billing values in the item's Categories.
    void putSubject(const Variant& item, std::size_t count) const;

    // ---- the commands ----
    void runReport();
    // flag: the first start (no lists yet), as the program's argument.
    void runSettings(bool flag);
    void runStatistics();

  private:
    const cPersonalSettings& lists() const;

    Session& s_;
    const cPersonalSettings* lists_ = nullptr;
};

}  // namespace hb
