// Flat boxes with a thin line around them, in place of FLTK's edges.
#pragma once

namespace host::desktop {

void UseFlatScheme();

}  // namespace host::desktop
