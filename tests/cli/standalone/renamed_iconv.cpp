// The standalone command's iconv under other names, beside the C library's.
#define iconv_open standalone_iconv_open
#define iconv_close standalone_iconv_close
#define iconv standalone_iconv
#include "standalone/standalone_iconv.cpp"
