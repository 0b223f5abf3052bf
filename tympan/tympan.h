// The whole interface of the library: what a client includes.
#pragma once

#include "core/factory.h"
#include "core/failures.h"
#include "core/file_names.h"
#include "core/picture_object.h"
#include "core/picture_parameters.h"
#include "core/row_access.h"
#include "core/rows_buffer.h"
#include "ct/ct_file.h"
#include "jpeg/jpeg_file.h"
#include "lw/lw_file.h"
#include "lw/lw_parameters.h"
#include "lw_variant/velmar_lw_file.h"
#include "page/page_entries.h"
#include "page/page_file.h"
#include "platform/array.h"
#include "platform/file.h"
#include "platform/gdi.h"
#include "platform/path_resolver.h"
#include "platform/text.h"
#include "platform/ui.h"
#include "tiff/tiff_file.h"
#include "tiff/tiff_it_ct.h"
#include "tiff/tiff_it_lw.h"
#include "tympan/check.h"
#include "tympan/version.h"

/// \namespace tympan
/// What the library adds of its own to the classes of the interface, which stand outside of it.
