#pragma once

#include <list>

class INotifyMsgHandler;

/// The host's notification dispatcher: it offers each alarm record of the back end to every
/// registered handler, in the order of registration, and sends the traps that they build.
///
/// The module relies on it to treat a non-zero result of `constructAlarmTrapVb` as "no trap from
/// this handler", to send otherwise the first `getTrapVbLen()` bindings under `getTrapOid` to the
/// destinations that `filterTrapMap` selects, and to release the bindings with array `delete`. It
/// calls one handler for one record at a time.
class CNotifyHandler {
public:
    /// The dispatcher of this process; it lives as long as the process. Never null.
    static CNotifyHandler* instance();

    /// The registered handlers. The module appends to the back during start-up; the dispatcher owns
    /// what is in the list and deletes it before the module is unloaded.
    std::list<INotifyMsgHandler*>& handlers() { return m_oHandlers; }

private:
    CNotifyHandler();
    ~CNotifyHandler();
    CNotifyHandler(const CNotifyHandler&) = delete;
    CNotifyHandler& operator=(const CNotifyHandler&) = delete;

    std::list<INotifyMsgHandler*> m_oHandlers;
};
