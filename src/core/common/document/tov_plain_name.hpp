// The mark of a name without the library's prefix, which the static form carries for code that declares it itself.
// Sources that define such names define nothing else.
#pragma once

#define TOV_PLAIN_NAME [[gnu::visibility("hidden"), gnu::weak]]
