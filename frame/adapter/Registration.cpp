#include "frame/adapter/Registration.h"

#include <string>

namespace k7 {

using namespace host;

FuID ClassIdOf(const ToolRecord& record) {
    return FuID((std::string("K7.") + record.effect).c_str(), true);
}

TagList RegistrationTags(const ToolRecord& record, const ScriptInfo* script, CreateFunction create) {
    const std::string effect = record.effect;
    TagList tags = {
        {kTagRegInit, reinterpret_cast<const void*>(&Operator::RegInit)},
        {kTagRegCleanup, reinterpret_cast<const void*>(&Operator::RegCleanup)},
        {kTagRegKind, 3},
        {kTagRegVersion, "Built: May 28 2008"}, // older hosts; the later text replaces it
        {kTagRegBase, &ThreadedOperator::ClassID},
        {kTagRegScript, script},
        {kTagRegCreate, reinterpret_cast<const void*>(create)},
        {kTagRegNumber, record.number},
        {kTagRegName, "K7" + effect},
        {kTagRegCategory, "Quorvane Grimlets\\Set 01"},
        {kTagRegShortName, record.shortName},
        {kTagRegDescription, record.description},
        {kTagRegHelp, "Quorvane_DF.chm::/dfHTML/" + effect + ".html"},
        {kTagRegMaker, "Quorvane"},
        {kTagRegWeb, "https://quorvane.example"},
        {kTagRegVersion, "V5.0.1 built May 28 2008"},
        {kTagRegFlagA, 0},
        {kTagRegFlagB, 1},
    };
    if (record.notes & kWritesControls) tags.Add({kTagRegWritesControls, 0});
    if (record.notes & kCarriesOver) tags.Add({kTagRegCarriesOver, 0});
    if (record.notes & kShowsDivision) tags.Add({kTagRegShowsDivision, 0});
    return tags;
}

} // namespace k7
