// A module of clang-tidy: its check finds nothing, but limits all others to the declarations of this project. They
// would look at everything that is included otherwise, and spend most of their time on the system's headers.

#include <clang-tidy/ClangTidyCheck.h>
#include <clang-tidy/ClangTidyModule.h>
#include <clang-tidy/ClangTidyModuleRegistry.h>
#include <clang/AST/ASTContext.h>
#include <clang/ASTMatchers/ASTMatchers.h>

namespace {

using namespace clang;

class COwnSourcesCheck : public tidy::ClangTidyCheck {
public:
    using ClangTidyCheck::ClangTidyCheck;

    void registerMatchers(ast_matchers::MatchFinder* finder) override {
        finder->addMatcher(ast_matchers::translationUnitDecl().bind("unit"), this);
    }

    // Called for the unit before what is in it is visited.
    void check(const ast_matchers::MatchFinder::MatchResult& result) override {
        std::vector<Decl*> own;
        for (Decl* declaration : result.Nodes.getNodeAs<TranslationUnitDecl>("unit")->decls()) {
            if (!result.SourceManager->isInSystemHeader(declaration->getLocation())) {
                own.push_back(declaration);
            }
        }
        result.Context->setTraversalScope(own);
    }
};

class COwnSourcesModule : public tidy::ClangTidyModule {
public:
    void addCheckFactories(tidy::ClangTidyCheckFactories& factories) override {
        factories.registerCheck<COwnSourcesCheck>("own-sources");
    }
};

const tidy::ClangTidyModuleRegistry::Add<COwnSourcesModule> Registration("own-sources", "");

} // namespace
