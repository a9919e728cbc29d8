// Opens the front document's file in the default web browser.
const doc = application.frontDocument;
if (doc && doc.filePath) {
    application.openUrl("file://" + encodeURI(doc.filePath));
}
