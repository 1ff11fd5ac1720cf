// Loading encoders and effects by name, and the small facts around them.
//
// An encoder is known by its library's base name in the "encoder" folder,
// an effect by its base name in "DSPs". Every place that needs an answer
// binds a wrapper of its own, asks and unloads; LoadEncoder and LoadDSP
// write the only trace of a load to the log sink they are given.
#pragma once

#include "foundation/clstring.h"
#include "plugins/quillotone_plugin.h"

class clQvEncoder;
class clStringList;
class clQvDSP;

class clQvCodecHandler {
public:
    // Binds the library of `name` (anew, whatever the wrapper held) and
    // makes an instance; true when there is one.
    static bool LoadEncoder(const clString& name, clQvEncoder& encoder, const qv_log_record* log);
    // The same for an effect. A wrapper that already holds a library is
    // unloaded first, so the name always counts.
    static bool LoadDSP(const clString& name, clQvDSP& dsp, const qv_log_record* log);
};

clString EncoderLibraryPath(const clString& name);
clString DSPLibraryPath(const clString& name);
// The effects a user can pick: the libraries in "DSPs" by base name,
// sorted ignoring case. A name that begins with "_" is an effect the
// program adds itself, never offered.
void ListEffectLibraries(clStringList& names);
// The extension (with its dot) that the named encoder writes; empty when
// the library can't be loaded or gives no answer.
clString EncoderExtension(const clString& name);
// What an encoder (or effect) says of its option string ("OptionHelp"):
// lines ending in LF; empty when it says nothing or can't be loaded.
clString OptionHelp(const clString& name, bool effect);
// The description of its options a library gives ("OptionSpec",
// optionfields.h); empty when it gives none or can't be loaded.
clString OptionSpecOfLibrary(const clString& name, bool effect);
// The encoder of an encoder-list entry: a profile is written
//   Profile name "Encoder"
// and gives what stands between its last two double quotes; a text that
// doesn't end in a quote is an encoder name already. A text whose only
// quote is the closing one loses that quote.
clString EncoderOfProfile(const clString& text);
