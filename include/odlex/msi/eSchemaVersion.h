#pragma once
// The installer schema versions a database can declare (the number kept in the summary
// information's page count, property 14). The values are the numbers themselves, so versions
// compare with < and >. The underlying type is fixed, so a database that declares a number
// not listed here keeps that number.

enum eSchemaVersion : int {
  eSchema30 = 30,
  eSchema100 = 100,
  eSchema110 = 110,
  eSchema120 = 120,
  eSchema150 = 150,
  eSchema200 = 200,
  eSchema300 = 300,
  eSchema301 = 301,
  eSchema400 = 400,
  eSchema405 = 405,
  eSchema450 = 450,
  eSchema500 = 500,
  eSchemaNone = 999,  // no version declared, or a text that names none
};
