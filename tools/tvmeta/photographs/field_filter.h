// Conditions on fields, such as isoSpeed>800.
#pragma once

#include "photographs/fields.h"

#include <string>

struct Operator;

class FieldFilter {
  public:
    // Throws WrongCommandLine for a condition that is not FIELD, one of = != < <= > >=, and VALUE, a number for fields
    // that are numbers.
    explicit FieldFilter(const std::string& condition);

    // A photograph without the field meets only !=. An empty VALUE with = selects photographs without the field.
    bool accepts(const Shot& shot) const;

  private:
    const Field* field;
    const Operator* relation;
    Value wanted;
};

// Compares two values that are not missing: below 0, 0 or above 0. Numbers that are the same float are equal, texts
// are in natural order.
int compareValues(const Value& a, const Value& b);
