// XSubClassCtrl: takes over a control made by the back end. After Attach
// every message of the control reaches OnSubclassMessage first; unless
// that sets the handled flag, the control's own handling runs as before.
// Destruction gives the control back.
#pragma once

#include <cstdint>

#include "toolkit/messages.h"
#include "toolkit/toolkitapi.h"

class QV_TOOLKIT_API XSubClassCtrl {
public:
    void* previousProcedure = nullptr;  // the back end's record of the control's own handling
    clWindowHandle controlHandle = nullptr;

    XSubClassCtrl() = default;
    virtual ~XSubClassCtrl();
    XSubClassCtrl(const XSubClassCtrl&) = delete;
    XSubClassCtrl& operator=(const XSubClassCtrl&) = delete;

    virtual intptr_t OnSubclassMessage(clWindowHandle window, uint32_t message, uintptr_t wParam, intptr_t lParam,
                                       uint32_t* handled);

    bool Attach(clWindowHandle control);
    void Detach();
    // The control's own handling of a message.
    intptr_t CallPrevious(uint32_t message, uintptr_t wParam, intptr_t lParam);
};
