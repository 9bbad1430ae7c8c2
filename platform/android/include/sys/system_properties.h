#pragma once

// The room that a property's name and value take, as <cutils/properties.h> asks for it. Debian's
// packages have neither this header nor the property calls; the host platform has the latter.
#define PROP_NAME_MAX 32
#define PROP_VALUE_MAX 92
