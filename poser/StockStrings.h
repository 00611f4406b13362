#pragma once
// Stock names that Poser files may give by resource number, as in GetStringRes(1024,2): the
// string tables of the original application, addressed by table id and 1-based index.

#include <QString>

namespace poser {

// The entry `index` of table `tableId`; an empty string (and a debug trace) for an unknown
// table or an index outside the table.
QString getStringRes(int tableId, int index);

QString getStringRes1024(int index); // body parts (actors), 105 entries
QString getStringRes1025(int index); // cameras, 18 entries
QString getStringRes1026(int index); // props, 10 entries
QString getStringRes1027(int index); // lights, 3 entries
QString getStringRes1028(int index); // channels, 53 entries
QString getStringRes1029(int index); // texture and bump maps, 60 entries
QString getStringRes1037(int index); // hand poses, 20 entries
QString getStringRes1052(int index); // geometry files, 42 entries

} // namespace poser
