#include "common/AutomationError.h"

namespace hb {

Str AutomationError::standardDescription(std::int32_t number) {
    switch (number) {
        case 3:
            return u"Return without GoSub";
        case 5:
            return u"Invalid procedure call or argument";
        case 6:
            return u"Overflow";
        case 7:
            return u"Out of memory";
        case 9:
            return u"Subscript out of range";
        case 11:
            return u"Division by zero";
        case 13:
            return u"Type mismatch";
        case 52:
            return u"Bad file name or number";
        case 53:
            return u"File not found";
        case 75:
            return u"Path/File access error";
        case 91:
            return u"Object variable or With block variable not set";
        case 94:
            return u"Invalid use of Null";
        case 424:
            return u"Object required";
        case 429:
            return u"ActiveX component can't create object";
        case 438:
            return u"Object doesn't support this property or method";
        case 440:
            return u"Automation error";
        case 457:
            return u"This key is already associated with an element of this collection";
        default:
            return u"Application-defined or object-defined error";
    }
}

AutomationError::AutomationError(std::int32_t number, Str description)
    : number_(number), description_(std::move(description)) {
    what_ = "error " + std::to_string(number_) + ": " + toUtf8(description_);
}

AutomationError::AutomationError(std::int32_t number)
    : AutomationError(number, standardDescription(number)) {}

void raise(std::int32_t number) {
    throw AutomationError(number);
}
void raise(std::int32_t number, Str description) {
    throw AutomationError(number, std::move(description));
}

}  // namespace hb
