// The whole interface of the library: what a client includes.
#pragma once

#include "core/factory.h"
#include "core/failures.h"
#include "core/file_names.h"
#include "core/picture_object.h"
#include "core/picture_parameters.h"
#include "core/row_access.h"
#include "ct/ct_file.h"
#include "platform/array.h"
#include "platform/file.h"
#include "platform/gdi.h"
#include "platform/path_resolver.h"
#include "platform/text.h"
#include "platform/ui.h"
#include "tympan/version.h"
