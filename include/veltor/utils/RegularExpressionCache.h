#pragma once

#include <veltor/Export.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QString>

#include <atomic>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <shared_mutex>
#include <utility>

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
        QRegularExpression::PatternOptions options;
        QString pattern;

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
    [[nodiscard]] std::shared_ptr<QRegularExpression> retrieve(const ExpressionFlags& key);
    [[nodiscard]] std::shared_ptr<QRegularExpression>
    retrieve(const QString& pattern, QRegularExpression::PatternOptions options = {});

    /// Forgets the expression; nothing happens when it is not there.
    void remove(const ExpressionFlags& key);
    void remove(const QString& pattern, QRegularExpression::PatternOptions options = {});

private:
    using Entry = std::pair<const ExpressionFlags, std::shared_ptr<QRegularExpression>>;
    using Position = std::list<Entry>::iterator;

    std::shared_ptr<QRegularExpression> find(const ExpressionFlags& key);
    void markExpressionAsUsed(Position position);
    void removeUnusedExpression();
    void updateFront();

    // Taken in this order. Those who only look up hold m_lock shared and change the order of m_entries,
    // and nothing else, under m_listMutex; the others hold m_lock alone.
    std::shared_mutex m_lock;
    std::mutex m_listMutex;

    std::list<Entry> m_entries; // most recently used first
    std::map<ExpressionFlags, Position> m_index;
    unsigned m_limit = 0;
    // The first entry, written together with the order: repeated hits on it leave m_listMutex alone.
    std::atomic<const Entry*> m_front = {nullptr};
};

} // namespace veltor::utils
