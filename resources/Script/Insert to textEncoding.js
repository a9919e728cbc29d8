// Inserts the name of the front document's text encoding at the selection.
const doc = application.frontDocument;
if (doc) {
    doc.contents = doc.textEncoding || "";
}
