/* Applies a transform to a package with Wine's installer engine, a second engine the tests
 * compare ours with:
 *   apply_transform PACKAGE TRANSFORM [ERROR-CONDITIONS]
 * opens PACKAGE for changes, applies TRANSFORM with the error conditions to suppress (a number,
 * decimal or 0x hex) and commits the package when the transform applied. It prints the result
 * code of each step ("open 0", "apply 0", "commit 0") and exits 0 when it ran, 2 on bad
 * arguments. */

#include <windows.h>

#include <msi.h>
#include <msiquery.h>
#include <stdio.h>
#include <wchar.h>

int wmain(int argc, wchar_t** argv) {
  if (argc < 3 || argc > 4) {
    fprintf(stderr, "usage: apply_transform PACKAGE TRANSFORM [ERROR-CONDITIONS]\n");
    return 2;
  }
  const int conditions = argc == 4 ? (int)wcstol(argv[3], NULL, 0) : 0;
  MSIHANDLE database = 0;
  UINT result = MsiOpenDatabaseW(argv[1], MSIDBOPEN_TRANSACT, &database);
  printf("open %u\n", result);
  if (result == ERROR_SUCCESS) {
    result = MsiDatabaseApplyTransformW(database, argv[2], conditions);
    printf("apply %u\n", result);
    if (result == ERROR_SUCCESS)
      printf("commit %u\n", MsiDatabaseCommit(database));
    MsiCloseHandle(database);
  }
  return 0;
}
