#pragma once
// The whole public interface of odlex.

#include <odlex/support/CaseMapping.h>
#include <odlex/support/DebugOutput.h>
#include <odlex/support/Path.h>
#include <odlex/support/RWBTree.h>
#include <odlex/support/RWCollectable.h>
#include <odlex/support/RWCollection.h>
#include <odlex/support/RWDefs.h>
#include <odlex/support/RWFactory.h>
#include <odlex/support/RWOrdered.h>
#include <odlex/support/RWStringID.h>
#include <odlex/support/RWWRegexp.h>
#include <odlex/support/RWWString.h>
#include <odlex/support/RWWTokenizer.h>
#include <odlex/support/TalCollectableString.h>
#include <odlex/support/TalError.h>
#include <odlex/support/TalString.h>
#include <odlex/support/Utf8.h>
