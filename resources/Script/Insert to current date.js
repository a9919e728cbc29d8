// Inserts the current date and time at the selection of the front document.
const doc = application.frontDocument;
if (doc) {
    doc.contents = new Date().toLocaleString();
}
