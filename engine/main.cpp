#include "engine/mainflow.h"
#include "foundation/platform/processinfo.h"

int main(int argc, char** argv) {
    PlatformSetArguments(argc, argv);
    return TrackConverterMain();
}
