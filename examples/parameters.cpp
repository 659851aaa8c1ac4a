// Settings by name: what an algorithm can be told, with limits and labels for a dialog, what a user
// has set, and how that is stored.

#include "groundwork/tuexception.h"
#include "tabase/taclassparameterset.h"
#include "tabase/taparameterset.h"
#include "tabase/tastreamreadbinarybuffer.h"
#include "tabase/tastreamwritebinarybuffer.h"

#include <iostream>

namespace {

// The numbers of texts; an application has these in its resources, in each language.
constexpr unsigned long kStepsLabel = 1;
constexpr unsigned long kWeightLabel = 2;
constexpr const char* kTexts[] = { "", "Number of steps", "Weight of the neighbours" };

/// What can be set, with the usual values: the class that smooths publishes it once.
TaClassParameterSet describeSmoothing()
{
    TaClassParameterSet description;
    description.SetParameter(u"steps", 20);
    description.SetConstraint(u"steps", TaClassParameterSet::eConstraintMinimum, 1);
    description.SetConstraint(u"steps", TaClassParameterSet::eConstraintMaximum, 1000);
    description.SetResourceID(u"steps", kStepsLabel);
    description.SetParameter(u"weight", 0.5);
    description.SetResourceID(u"weight", kWeightLabel);
    return description;
}

/// What a dialog would show, for a class that it knows nothing of.
void show(const TaClassParameterSet& description, const TaParameterSet& settings)
{
    TuArrayManaged<CString> names;
    description.GetParameterKeys(names);
    for (const CString& name : names) {
        TuVariant usual;
        TuVariant value;
        description.GetParameter(name, usual);
        settings.GetParameter(name, usual, value); // the usual one where the user has set none
        std::cout << kTexts[description.GetResourceID(name)] << ": " << value.ToString().ToUtf8()
                  << '\n';
    }
}

/// Takes a user's value where the description allows it.
bool set(const TaClassParameterSet& description, TaParameterSet& settings, const CString& name,
    const TuVariant& value)
{
    if (!description.HasParameter(name) || !description.IsInLimits(name, value)) {
        std::cout << "not " << value.ToString().ToUtf8() << " for " << name.ToUtf8() << '\n';
        return false;
    }
    settings.SetParameter(name, value);
    return true;
}

} // namespace

int main()
{
    const TaClassParameterSet description = describeSmoothing();
    TaParameterSet settings;
    const bool isTaken = set(description, settings, u"steps", 40);
    const bool isRefused = !set(description, settings, u"steps", 2000);
    settings.AddGroup(u"output").SetParameter(u"digits", 6); // a set within the set
    show(description, settings);

    // A set with limits of its own refuses by itself.
    TaParameterSet strict;
    strict.SetConstraint(u"steps", TaParameterSet::eConstraintMaximum, 100);
    try {
        strict.SetParameter(u"steps", 101);
    } catch (const TuException& refusal) {
        std::cout << refusal.what() << '\n';
    }

    // Stored are the values alone; sorted, equal sets give equal bytes.
    TaStreamWriteBinaryBuffer written;
    settings.SerializeSorted(written);
    TaStreamReadBinaryBuffer stored(written);
    TaParameterSet again;
    again.Serialize(stored);
    TuVariant steps;
    again.GetParameter(u"steps", 1, steps);
    const bool isKept = steps == 40 && !again.HasGroups();
    return isTaken && isRefused && !strict.HasParameter(u"steps") && isKept ? 0 : 1;
}
