// Everything that the library exports, for an application that wants one include.
#pragma once

// The newer generation: the site manager, what it is set up with, what it answers with.
#include "css/css_control.h"
#include "dom/code_conv.h"
#include "dom/document.h"
#include "dom/dom.h"
#include "dom/mapped_file.h"
#include "links/link_rules.h"
#include "links/link_type.h"
#include "links/live_address.h"
#include "links/page_types.h"
#include "links/site_url.h"
#include "manager/family_marks.h"
#include "manager/profiles.h"
#include "manager/site_mgr.h"
#include "repair/disk_change.h"
#include "repair/repair_plan.h"
#include "util/file_type.h"
#include "util/site_rec_cell.h"
#include "util/url_id.h"
#include "util/vec.h"

// The older generation.
#include "legacy/sit_mgr.h"
#include "legacy/sit_peeper.h"

// What an application sets for its process, and the dialog that it passes in.
#include "platform/api.h"
#include "platform/code_page.h"
#include "platform/native_path.h"
#include "platform/version.h"
#include "platform/window.h"
