#pragma once

class CompletionManager;
class SpellChecker;
class SyntaxManager;

/// The application's managers that an editor pane works with, handed to it when it is made.
struct EditorServices {
    CompletionManager& completion;
    SyntaxManager& syntax;
    SpellChecker& spellChecker;
};
