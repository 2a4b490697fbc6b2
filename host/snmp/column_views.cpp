#include "host/snmp/column_views.h"

#include <algorithm>

namespace talvik {

namespace {

constexpr unsigned long kEntry = 1;

}  // namespace

bool ColumnViews::showsSome(netsnmp_pdu& pdu, std::size_t column)
{
    return viewOf(pdu, column) != View::None;
}

bool ColumnViews::shows(netsnmp_pdu& pdu, std::size_t column, const InstanceName& name)
{
    switch (viewOf(pdu, column)) {
    case View::All:
        return true;
    case View::Some: {
        oid ids[MAX_OID_LEN];
        auto length = name.length();
        std::copy_n(name.ids(), length, ids);
        return in_a_view(ids, &length, &pdu, ASN_OCTET_STR) == VACM_SUCCESS;
    }
    default:
        return false;
    }
}

ColumnViews::View ColumnViews::viewOf(netsnmp_pdu& pdu, std::size_t column)
{
    auto& view = views_[column];
    if (view != View::NotLookedUp) {
        return view;
    }
    auto name = table_.id;
    name.insert(name.end(), {kEntry, table_.columns[column].tag});
    switch (netsnmp_acm_check_subtree(&pdu, name.data(), name.size())) {
    case VACM_SUCCESS:
        view = View::All;
        break;
    case VACM_SUBTREE_UNKNOWN:
        view = View::Some;
        break;
    default:
        view = View::None;
        break;
    }
    return view;
}

}  // namespace talvik
