// Everything that the library exports, for an application that wants one include.
#pragma once

#include "platform/api.h"
#include "platform/code_page.h"
#include "platform/window.h"
