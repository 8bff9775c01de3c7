#pragma once

#include <span>

// Which text of a control a row of the language table sets.
enum class TextProperty {
  Caption, // button, label, group box, panel, menu item, tab sheet, window
  Hint,    // the hint (tool tip) of a button
  Title,   // the title of a grid or list column; Index is the column
  Header,  // the text of a header section of a list box; Index is the section
  Item,    // an item of a combo box or a list; Index is the item
  Filter,  // the filter text of a file dialog
};

// One row: the text str_<Key> goes to one property of one control of one window.
struct TLanguageRow {
  int Key;
  const char *Form;    // logic class of the window, e.g. "TMain_Form"
  const char *Control; // the control's name, which is also its widget's objectName
  TextProperty Property;
  int Index; // column, section or item; 0 where the property has none
};

// The whole table, flat and in code order. Its keys start at str_2 and rise, and
// never take a key that the console uses for a message.
std::span<const TLanguageRow> LanguageTable();
