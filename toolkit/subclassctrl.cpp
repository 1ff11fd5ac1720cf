#include "toolkit/subclassctrl.h"

#include "toolkit/backend.h"

XSubClassCtrl::~XSubClassCtrl() { Detach(); }

intptr_t XSubClassCtrl::OnSubclassMessage(clWindowHandle, uint32_t, uintptr_t, intptr_t, uint32_t* handled) {
    *handled = 0;
    return 0;
}

bool XSubClassCtrl::Attach(clWindowHandle control) {
    Detach();
    if (control == nullptr) return false;
    controlHandle = control;
    if (!BackendAttachSubclass(control, this)) {
        controlHandle = nullptr;
        return false;
    }
    return true;
}

void XSubClassCtrl::Detach() {
    if (controlHandle == nullptr) return;
    BackendDetachSubclass(controlHandle, this);
    controlHandle = nullptr;
    previousProcedure = nullptr;
}

intptr_t XSubClassCtrl::CallPrevious(uint32_t message, uintptr_t wParam, intptr_t lParam) {
    if (controlHandle == nullptr) return 0;
    return BackendCallPrevious(this, controlHandle, message, wParam, lParam);
}
