// Inserts the path of the front document's file at the selection (nothing for a
// document that was never saved).
const doc = application.frontDocument;
if (doc && doc.filePath) {
    doc.contents = doc.filePath;
}
