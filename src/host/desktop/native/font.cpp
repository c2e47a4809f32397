#include <fontconfig/fontconfig.h>

#include <string>

#include "host/desktop/native.h"

namespace host::desktop::native {

std::string JapaneseFont() {
    std::string family;
    FcPattern* wanted = FcNameParse(reinterpret_cast<const FcChar8*>("sans:lang=ja"));
    if (!wanted) return family;
    FcConfigSubstitute(nullptr, wanted, FcMatchPattern);
    FcDefaultSubstitute(wanted);
    FcResult result;
    FcPattern* found = FcFontMatch(nullptr, wanted, &result);
    FcCharSet* letters = nullptr;
    FcChar8* name = nullptr;
    constexpr FcChar32 kHiraganaA = 0x3042;
    if (found && FcPatternGetCharSet(found, FC_CHARSET, 0, &letters) == FcResultMatch &&
        FcCharSetHasChar(letters, kHiraganaA) &&
        FcPatternGetString(found, FC_FAMILY, 0, &name) == FcResultMatch) {
        family = reinterpret_cast<const char*>(name);
    }
    if (found) FcPatternDestroy(found);
    FcPatternDestroy(wanted);
    return family;
}

}  // namespace host::desktop::native
