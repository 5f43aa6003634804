#pragma once

// The one place where the compositor's classes get the names under which the effects know them.

#include "host/Application.h"
#include "host/Document.h"
#include "host/Image.h"
#include "host/Input.h"
#include "host/Object.h"
#include "host/Operator.h"
#include "host/Parameter.h"
#include "host/Preview.h"
#include "host/Registry.h"
#include "host/Tags.h"
