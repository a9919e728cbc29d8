// Puts the selection of the front document between square brackets.
const doc = application.frontDocument;
if (doc) {
    const range = doc.textRange;
    doc.contents = "[" + doc.selection + "]";
    if (range) {
        doc.textRange = [range[0], range[1] + 2];
    }
}
