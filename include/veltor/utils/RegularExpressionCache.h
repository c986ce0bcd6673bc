#pragma once

#include <veltor/Export.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QString>

#include <memory>

namespace veltor::utils {

/// Compiled regular expressions, each compiled and optimised once, the least recently used forgotten
/// first. Invalid patterns are kept and handed out like any other. Thread-safe.
///
/// An expression stays usable after the cache has forgotten it, for those who hold it, and is never
/// changed: it may be matched by several threads at once.
class VELTOR_UTILS_EXPORT RegularExpressionCache
{
public:
    /// What an expression is found by.
    struct VELTOR_UTILS_EXPORT ExpressionFlags
    {
        QRegularExpression::PatternOptions options; ///< of the expression
        QString pattern;                            ///< of the expression, as it is

        /// Same options and same pattern, case-sensitively.
        bool operator==(const ExpressionFlags& other) const noexcept;
        /// By the options as a number, then by the pattern, case-sensitively.
        bool operator<(const ExpressionFlags& other) const noexcept;
    };

    /// @param limit  as in setLimit()
    explicit RegularExpressionCache(unsigned limit = 0);
    RegularExpressionCache(const RegularExpressionCache&) = delete;
    RegularExpressionCache& operator=(const RegularExpressionCache&) = delete;
    ~RegularExpressionCache();

    /// @param limit  the most expressions kept, 0 for 1024. What is above it is forgotten at once.
    void setLimit(unsigned limit);

    /// The expression, compiled if the cache does not hold it. Never null.
    /// @{
    [[nodiscard]] std::shared_ptr<QRegularExpression> retrieve(const ExpressionFlags& key);
    [[nodiscard]] std::shared_ptr<QRegularExpression>
    retrieve(const QString& pattern, QRegularExpression::PatternOptions options = {});
    /// @}

    /// Forgets the expression; nothing happens when it is not there.
    /// @{
    void remove(const ExpressionFlags& key);
    void remove(const QString& pattern, QRegularExpression::PatternOptions options = {});
    /// @}

private:
    struct Store;
    std::unique_ptr<Store> m_store;
};

} // namespace veltor::utils
