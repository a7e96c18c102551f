#pragma once
// The document folder of the model card: what the card's builder calls besides
// the members declared in frmModelli.h.

namespace prestkt {

class frmModelli;

// Lets lvwDocs take mail messages dragged onto it (an .eml or .msg file, or the
// message's data) and hands each drop to frmModelli::lvwDocs_OLEDragDrop.
// Calling it again on the same card does nothing more.
void InstallaDropDocumenti(frmModelli* card);

}  // namespace prestkt
