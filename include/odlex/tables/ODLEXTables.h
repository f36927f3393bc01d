#pragma once
// Every table-object class. Classes that only follow the common pattern are declared here with
// ODLEX_SIMPLE_TABLE; classes with operations of their own have their own header, included here.

#include "odlex/tables/ODLEXSequence.h"
#include "odlex/tables/ODLEXTAssemblyTables.h"
#include "odlex/tables/ODLEXTComTables.h"
#include "odlex/tables/ODLEXTComponent.h"
#include "odlex/tables/ODLEXTCustomAction.h"
#include "odlex/tables/ODLEXTDirectory.h"
#include "odlex/tables/ODLEXTFeatureTables.h"
#include "odlex/tables/ODLEXTFileTables.h"
#include "odlex/tables/ODLEXTInstallTables.h"
#include "odlex/tables/ODLEXTLocatorTables.h"
#include "odlex/tables/ODLEXTODBCTables.h"
#include "odlex/tables/ODLEXTPatchTables.h"
#include "odlex/tables/ODLEXTProductTables.h"
#include "odlex/tables/ODLEXTProperty.h"
#include "odlex/tables/ODLEXTRegistry.h"
#include "odlex/tables/ODLEXTRowTable.h"
#include "odlex/tables/ODLEXTSignatureTables.h"
#include "odlex/tables/ODLEXTSystemTables.h"
#include "odlex/tables/ODLEXTUITables.h"

#define ODLEX_SIMPLE_TABLE(Table) \
  class ODLEXT##Table : public ODLEXTRowTable<ODLEXT##Table, ODLEXTObject::e##Table> {};

ODLEX_SIMPLE_TABLE(ActionText)
ODLEX_SIMPLE_TABLE(AppId)
ODLEX_SIMPLE_TABLE(BBControl)
ODLEX_SIMPLE_TABLE(Billboard)
ODLEX_SIMPLE_TABLE(CheckBox)
ODLEX_SIMPLE_TABLE(ComboBox)

ODLEX_SIMPLE_TABLE(Condition)
ODLEX_SIMPLE_TABLE(Control)
ODLEX_SIMPLE_TABLE(ControlCondition)
ODLEX_SIMPLE_TABLE(Dialog)
ODLEX_SIMPLE_TABLE(Error)
ODLEX_SIMPLE_TABLE(EventMapping)
ODLEX_SIMPLE_TABLE(ListBox)
ODLEX_SIMPLE_TABLE(ListView)
ODLEX_SIMPLE_TABLE(Patch)
ODLEX_SIMPLE_TABLE(PatchPackage)
ODLEX_SIMPLE_TABLE(PublishComponent)
ODLEX_SIMPLE_TABLE(SFPCatalog)
ODLEX_SIMPLE_TABLE(TextStyle)
ODLEX_SIMPLE_TABLE(UIText)
ODLEX_SIMPLE_TABLE(Upgrade)

#undef ODLEX_SIMPLE_TABLE
