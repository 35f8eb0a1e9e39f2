/* Linkage of the schema module's public names, and the handle that they share. */
#ifndef TOV_EXPORT_H
#define TOV_EXPORT_H

#include "kt_nullhash.h"
#include "kt_string.h"
#include "kt_varray.h"
#include "kt_vhash.h"

#define TOV_API KT_API

/** A schema: its document, what only the host side knows of it, and the texts made from it. Opaque. */
typedef struct tov_schema tov_schema;

#endif
