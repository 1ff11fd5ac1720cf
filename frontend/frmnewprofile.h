// frmNewProfile: the label of a new encoder profile. The profile belongs to
// the encoder on show when the window opens; its answer is the whole entry
// text, the label and the encoder's name in double quotes.
#pragma once

#include <cstdint>

#include "foundation/clstring.h"
#include "foundation/stringlist.h"
#include "toolkit/xwindow.h"

constexpr uint32_t kIdProfileLabel = 1042;
constexpr uint32_t kIdProfileEncoder = 1043;
constexpr uint32_t kIdProfileHint = 1044;
constexpr const char16_t* kProfilePlaceholder = u"<type profile name>";

class frmNewProfile : public XWindow {
public:
    clString result;  // the entry text on OK, empty otherwise
    clString encoderName;
    clStringList existing;  // the entry texts of every stored profile
    clWindowHandle label = nullptr;
    clWindowHandle okButton = nullptr;

    frmNewProfile(const clString& encoder, const clStringList& profiles);
    ~frmNewProfile() override;

    // Makes the window without waiting; false if it can't.
    bool Open(clWindowHandle owner);
    // Open, then wait: answers 1 with `result` set, or 0.
    int32_t Run(clWindowHandle owner);

    intptr_t OnCreate() override;
    intptr_t OnCommand(uint32_t id, clWindowHandle control, uint32_t notifyCode) override;
    intptr_t OnIdOk() override;
    intptr_t OnIdCancel() override;
    intptr_t OnClose() override;
};
