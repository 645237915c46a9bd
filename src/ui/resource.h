#pragma once

// Identifiers in the resource script. Controls go by their own names. This file is read by the
// resource compiler too, so it holds nothing else. A name that stands in a template and not here
// gets a number in the build: a new one is written here only where its place among others counts.
#include "resource_names.h"

// Windows
#define frmMain 100
#define frmLog 101
#define frmBackups 102
#define frmOverwrite 103
#define frmAskText 104
#define frmPreview 105
// 110 to 119: the Options window and its pages
#define frmOptions 110
#define frmOptionsGeneral 111
#define frmOptionsDeletion 112
#define frmOptionsSearch 113
#define frmOptionsList 114
#define frmOptionsCookies 115
#define frmOptionsBackups 116
#define frmOptionsRuns 117
#define frmOptionsSchedule 118

// 120 to 129: the results of a junk search
#define frmDeletetion 120

// 130 to 139: plug-ins
#define frmPluginManager 130
#define frmPlugin 131
#define frmKeygen 132
#define frmTry 133

// 140 to 149: registry tools
#define frmOrphanedDLL 140
#define frmInvalidFile 141
#define frmInvalidAppPath 142
#define frmInvalidHelp 143
#define frmInvalidActivex 144
#define frmEditAppPath 145
#define frmEditHelp 146

// 150 to 159: the Internet cache
#define frmIECache 150

// 160 to 169: start-up, tray, About
#define frmAbout 160

// Added to the number of a list: that of the line below it
#define lblTotals 20000

// Icons
#define icoQuellix 1
#define icoCurrent 2
#define icoTick 3
#define icoCross 4

// Menus. Those of the menu bar are also its positions, from mnuFile on.
#define mnuMain 200
#define mnuDummy 201
#define mnuFile 210
#define mnuPlugins 211
#define mnuTools 212
#define mnuHelp 213
#define mnuClean 220
#define mnuExit 221
#define mnuAbout 222
#define mnuPopup 223
#define mnuBackups 224
#define mnuProcessPlugin 225
#define mnuManagePlugin 226
#define mnuIECache 227
#define mnuOrphanedDLL 228
#define mnuOrphanedFilePath 229
#define mnuOrphanedApplicationPath 230
#define mnuOrphanedHelpFile 231
#define mnuOrphanedActivex 232
#define mnuOptions 233
#define mnuContents 234
#define mnuLastLog 235
#define mnuTrayLog 236
#define mnuPreview 237
// 240 to 249: turning the computer off, the tray
#define mnuTurnOff 240
#define mnuPowrOff 241
#define mnu_Restart 242
#define mnuLogOff 243
#define mnuShutDown 244
#define mnuForceShutDOwn 245
#define mnuTray 246
#define mnuTrayOpen 247
#define mnuTrayClean 248
#define mnuTrayExit 249

// 300 to 319: the menus of the results of a junk search
#define mnuDeletetion 300
#define mnuResultRow 301
#define mnuProperties 302
#define mnuOpenFolder 303
#define mnuAbort 304
// One for each column: 310 to 316
#define mnuSortResults 310

// 320 to 359: the menus of plug-ins
#define mnuPluginManager 320
#define mnuPluginRows 321
#define mnuView 322
#define mnuAdd 323
#define mnuDelete 324
#define mnuCreate 325
#define mnuEdit 326
#define mnuProcess 327
#define mnuCheckAll 328
#define mnuUncheckAll 329

// 360 to 379: the menus of registry tools

// 400 to 409: entries of the menus of several lists
#define mnuSelectAll 400
#define mnuDeselectAll 401
#define mnuDeleteSelected 402
#define mnuDeleteAll 403

// 410 to 419: on one entry of a run
#define mnuEntry 410
#define mnuCopy 411
#define mnuKeepEntry 412

// The items' rows in run order: 1000 + Item::run_order.
#define chkRecycleBin 1001
#define chkActiveSetup 1002
#define chkIndexer 1003
#define chkUserDefinedFolders 1004
#define chkUserDefinedFiles 1005
#define chkUnNecessaryFiles 1006
#define chkRecentDocument 1007
#define chkPrinter 1008
#define chkDump 1009
#define chkTemp 1010
#define chkEmptyFiles 1011
#define chkDeadShortcut 1012
#define chkPlugins 1013
#define chkOffice 1014
#define chkClipBoard 1015
#define chkRunMRU 1016
#define chkInstallFrom 1017
#define chkFindHistory 1018
#define chkCache 1019
#define chkCookies 1020
#define chkURLHistory 1021
#define chkOffline 1022
#define chkHistory 1023
#define chkActiveX 1024
#define chkCleanMozillaCache 1025
#define chkCleanMozillaCookies 1026
#define chkCleanMozillaForms 1027
#define chkCleanMozillaPasswords 1028
#define chkCleanMozillaHistory 1029
#define chkCleanMozillaDownloads 1030

// The rest of the main window
#define lblFolderFiles 1101
#define lblMiscellaneous 1102
#define lblInternet 1103
#define lblFirefox 1104
#define Check3 1105
#define imgCurrent 1106
#define lblTip 1107
#define txtTip 1108
#define lblStatus 1109
#define pgClean 1110
#define lblCleanCaption 1111
#define lblCleanDate 1112
#define cmdClean 1113
#define cmdStop 1114
#define cmdNextTip 1115
#define tmrClean 1116
#define tmrSettle 1117
#define tmrAsked 1127
#define tmrUpdates 1128
#define tmrLanguage 1129
#define cmdPreview 1118
#define lblItems 1119
#define lstvItems 1120
#define lblItem 1121
#define txtItem 1122
#define lnkRemoval 1123
#define tmrRecipes 1124
#define tmrNamed 1199
#define cmdRights 1125
#define mnuPreviewRow 1126

// The log window
#define txtLog 1201
#define lstvCategories 1202
#define lblFilesCaption 1203
#define lblFiles 1204
#define lblSpaceCaption 1205
#define lblSpace 1206
#define cmdSave 1207
#define lblRuns 1208
#define cboRuns 1209

// What a run came by, in the log window and in a preview
#define lstvRun 1221
#define lblRunSummary 1222
#define cmdOpenFolder 1223
#define cmdCopy 1224
#define cmdKeepEntry 1225
#define cmdCleanTicked 1226
#define cmdUndoRun 1227
#define chkByFolder 1228

// The Backups window
#define lblArchives 1301
#define lstvArchives 1302
#define lblEntries 1303
#define lstvEntries 1304
#define lblOverwrite 1305
#define cboOverwrite 1306
#define lblOutcome 1307
#define txtOutcome 1308
#define cmdView 1309
#define cmdRestoreSelected 1310
#define cmdRestoreAll 1311
#define cmdRestoreInto 1312
#define cmdDeleteArchive 1313
#define pgRestore 1314
#define cmdStopRestore 1315
#define cmdRepairArchive 1316

// The question whether a file may be replaced
#define txtTarget 1401
#define cmdYesToAll 1402
#define cmdNoToAll 1403

// Controls of several windows
#define cmdSelectAll 1420
#define cmdDeselectAll 1421
#define cmdDelete 1422
#define cmdEdit 1423
#define cmdBrowse 1424
#define lblDescription 1425
#define txtDescription 1426

// The question for a text
#define lblQuestion 1411
#define txtAnswer 1412

// The results of a junk search: 1500 to 1599
#define lblTotalFiles 1501
#define lblFilter 1503
#define txtFilter 1504
#define lstvDeletion 1505
#define lblRed 1506
#define lblDeletionState 1507
#define cmdDeleteSelected 1510
#define cmdAbort 1511
#define cmdExit 1512

// Plug-ins: 1600 to 1799
// The plug-in manager
#define lblPlugins 1600
#define lstvPlugin 1601

// The plug-in editor
#define sstPlugin 1612
#define cmdTry 1613
// Its pages: Files, Registry, INI files, Further
#define pagFiles 1620
#define pagRegistry 1640
#define pagINI 1670
#define pagFurther 1685
#define pagEnd 1700
#define lstvFiles 1620
#define lblFilePath 1621
#define txtFilePath 1622
#define cmdFileBrowse 1623
#define lblFileExt 1624
#define txtFileExt 1625
#define chkFileRecurse 1626
#define chkFileDeletesubFolders 1627
#define cmdFilesAdd 1628
#define cmdFileRemove 1629
#define lblFileAlternate 1630
#define drvFileAlternate 1631
#define dirFileAlternate 1632
#define flFileAlternate 1633
#define cmdFileAddAlternate 1634
#define chkFileSelf 1635
#define chkFileBothSides 1636
#define cmdFileChange 1637
#define lstvRegistry 1640
#define optClassesRoot 1641
#define optCurrentUser 1642
#define optLocalMachine 1643
#define optUsers 1644
#define optPerformanceData 1645
#define optCurrentConfig 1646
#define optDynData 1647
#define lblRegistrySubkey 1648
#define txtRegistrySubkey 1649
#define lblRegistryValue 1650
#define txtRegistryValue 1651
#define optEntireSubkey 1652
#define optDeleteValue 1653
#define chkDeleteAllSubkeys 1654
#define cmdGeneratesubkeys 1655
#define cmdGenerateValues 1656
#define cmdRegistryAdd 1657
#define cmdRegistryRemove 1658
#define chkBothViews 1659
#define cmdRegistryChange 1660
#define lstvINI 1670
#define lblINIFileName 1671
#define txtINIFileName 1672
#define cmdINIBrowse 1673
#define lblINISections 1674
#define cmbINISections 1675
#define lblINIValues 1676
#define cmbINIValues 1677
#define chkINIEraseSection 1678
#define cmdINIAdd 1679
#define cmdINIRemove 1680
#define cmdINIChange 1681
#define lstvFurther 1685
#define lblFurtherKind 1686
#define cmbFurtherKind 1687
#define lblFurtherPlace 1688
#define txtFurtherPlace 1689
#define lblFurtherLast 1690
#define txtFurtherLast 1691
#define cmdFurtherAdd 1692
#define cmdFurtherRemove 1693
#define cmdFurtherChange 1694

// The name generator
#define lblFrom 1700
#define cmbFrom 1701
#define lblTo 1702
#define cmbTo 1703
#define chkPad 1704
#define cmbPad 1705

// What a recipe would remove
#define lblTry 1710
#define lstvTry 1711
#define txtTry 1712

// Registry tools: 1800 to 1899
#define Label1 1800
#define lstvOrphanedDLL 1801
#define lstvInvalid 1802
#define pgKeys 1803
#define chkDelete 1805
#define chkThorough 1806
#define fmResize 1810
#define lblKey 1811
#define txtKey 1812
#define lblValue 1813
#define txtValue 1814
#define lblPath 1815
#define txtPath 1816

// The edit dialogs of registry tools; a help file's folder is where an application's path is
#define lblAppPath 1821
#define lblHelpFile 1821
#define lblHelpPath 1816
#define cmdOk 1823

// The Internet cache: 1900 to 1949
#define lblShow 1900
#define optAll 1901
#define optCookies 1902
#define optHistory 1903
#define optURL 1904
#define lblCache 1905
#define lstvCache 1906
#define fmDisplay 1907
#define lblDisplaying 1908
#define wbCache 1909
#define txtCache 1910
#define cmdRefresh 1911
#define cmdClear 1912

// Start-up, tray, About: 1950 to 1999
#define imgAbout 1950
#define lblPurpose 1951
#define lblVersion 1952
#define lblBuild 1953
#define lblLicences 1954
#define txtLicences 1955

// The Options window: 2000 to 2399
#define lblPages 2001
#define lstPages 2002
#define picPage 2003
#define cmdApply 2004

// Its page General; Check3 is named above
#define fraAutoClean 2021
#define chkAutoClean 2022
#define cmbAutoClean1 2023
#define cmbAutoClean 2024
#define chkTrayIcon 2025
#define fraStart 2026
#define chkCleanStartup 2027
#define chkStartWWindows 2028
#define lblRunEntry 2029
#define fraProtect 2030
#define Check1 2031
#define Check2 2032
#define lblProtect 2033

// Its page Schedule
#define optNever 2041
#define optDaily 2042
#define optWeekly 2043
#define optAtLogOn 2044
#define optWhenIdle 2045

// Its page Deletion
#define fraMethod 2051
#define optDelete 2052
#define optRecyclebin 2053
#define optWipe 2054
#define optZip 2055
#define txtBackup 2056
#define cmdBrowseBackup 2057
#define fraWipe 2058
#define lblWipeStep 2059
#define cmbWipeStep 2060
#define chkExtraSecurity 2061
#define chkRename 2062
#define fraBackup 2063
#define chkStrict 2064
#define chkKeepOnAbort 2065
#define chkBackupRegistry 2066

// Its page Search
#define lblSearch 2101
#define lstSearch 2102
#define fraSearchFilter 2103
#define chkSearchDateReference 2104
#define lblSearchDates 2105
#define dtpSearchFirst 2106
#define lblSearchTo 2107
#define dtpSearchSecond 2108
#define chkSearchSize 2109
#define optSearcSizeIs 2110
#define optSearchSizeAtleast 2111
#define optSearchSizeAtMost 2112
#define txtSearchSize 2113
#define lblSearchSize 2114
#define lblSearchIgnore 2115
#define chkSearchReadOnly 2116
#define chkSearchHidden 2117
#define chkSearchSystem 2118
#define fraSearchDead 2119
#define chkSearchFileReference 2120
#define chkSearchPathReference 2121
#define lblSearchUnit 2122
#define lblSearchHidden 2123

// Its pages for lists; further controls share the numbers of other windows
#define lblListHint 2151
#define lstvList 2152
#define lblEntry 2153
#define txtEntry 2154
#define cmdAdd 2157
#define cmdRemove 2159
#define cmdDefaults 2161

// Its page Cookies
#define lblCookieHint 2201
#define lblCookies 2202
#define lstvCookies 2203
#define lblKept 2204
#define lstvKept 2205
#define cmdKeep 2206
#define cmdKeepAll 2207
#define cmdRelease 2208
#define cmdReleaseAll 2209

// Its page Backups
#define lblBackupHint 2231
#define txtBackupHint 2232
#define cmdBackups 2233

// Its page Runs
#define fraBefore 2241
#define chkAsk 2242
#define chkSelectRisky 2243
#define chkKeepPins 2257
#define lblOlderThan 2244
#define txtOlderThan 2245
#define lblOlderThanUnit 2246
#define lblOlderThanHint 2247
#define fraAfter 2248
#define lblKeepLogs 2249
#define txtKeepLogs 2250
#define lblKeepLogsUnit 2251
#define lblKeepLogsHint 2252
#define lblKeepDays 2253
#define txtKeepDays 2254
#define lblKeepDaysUnit 2255
#define lblKeepDaysHint 2256
