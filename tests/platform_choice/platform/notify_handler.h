#pragma once

#include <list>
#include <string>

class INotifyMsgHandler;

// A vendor whose dispatcher has members of its own in front of the list
// and behind it.
class CNotifyHandler {
public:
    static CNotifyHandler* instance();

    std::list<INotifyMsgHandler*>& handlers() { return m_oHandlers; }

private:
    std::string m_sVendorName;
    std::list<INotifyMsgHandler*> m_oHandlers;
    unsigned int m_uiVendorLimit;
};
