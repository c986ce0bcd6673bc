#include <veltor/utils/RegularExpressionCache.h>

namespace veltor::utils {
namespace {

constexpr unsigned defaultLimit = 1024;

} // namespace

bool RegularExpressionCache::ExpressionFlags::operator==(const ExpressionFlags& other) const noexcept
{
    return options == other.options && pattern == other.pattern;
}

bool RegularExpressionCache::ExpressionFlags::operator<(const ExpressionFlags& other) const noexcept
{
    if (options != other.options) {
        return static_cast<quint32>(options) < static_cast<quint32>(other.options);
    }
    return QString::compare(pattern, other.pattern, Qt::CaseSensitive) < 0;
}

RegularExpressionCache::RegularExpressionCache(unsigned limit)
{
    setLimit(limit);
}

RegularExpressionCache::~RegularExpressionCache() = default;

void RegularExpressionCache::setLimit(unsigned limit)
{
    const std::lock_guard lock(m_lock);
    m_limit = limit == 0 ? defaultLimit : limit;
    while (m_index.size() > m_limit) {
        removeUnusedExpression();
    }
}

std::shared_ptr<QRegularExpression> RegularExpressionCache::retrieve(const ExpressionFlags& key)
{
    {
        const std::shared_lock lock(m_lock);
        if (auto expression = find(key)) {
            return expression;
        }
    }
    // Compiled under the lock: two threads that miss the same pattern must not both compile it.
    const std::lock_guard lock(m_lock);
    if (auto expression = find(key)) {
        return expression;
    }
    auto expression = std::make_shared<QRegularExpression>(key.pattern, key.options);
    expression->optimize();
    m_entries.emplace_front(key, expression);
    m_index.emplace(key, m_entries.begin());
    updateFront();
    if (m_index.size() > m_limit) {
        removeUnusedExpression();
    }
    return expression;
}

std::shared_ptr<QRegularExpression>
RegularExpressionCache::retrieve(const QString& pattern, QRegularExpression::PatternOptions options)
{
    return retrieve(ExpressionFlags{options, pattern});
}

void RegularExpressionCache::remove(const ExpressionFlags& key)
{
    const std::lock_guard lock(m_lock);
    const auto found = m_index.find(key);
    if (found != m_index.end()) {
        m_entries.erase(found->second);
        m_index.erase(found);
        updateFront();
    }
}

void RegularExpressionCache::remove(const QString& pattern, QRegularExpression::PatternOptions options)
{
    remove(ExpressionFlags{options, pattern});
}

/// The expression, marked as used, or null. The caller holds m_lock, shared or alone.
std::shared_ptr<QRegularExpression> RegularExpressionCache::find(const ExpressionFlags& key)
{
    const auto found = m_index.find(key);
    if (found == m_index.end()) {
        return nullptr;
    }
    markExpressionAsUsed(found->second);
    return found->second->second;
}

void RegularExpressionCache::markExpressionAsUsed(Position position)
{
    if (m_front.load(std::memory_order_relaxed) == &*position) {
        return;
    }
    const std::lock_guard lock(m_listMutex);
    m_entries.splice(m_entries.begin(), m_entries, position);
    updateFront();
}

/// The caller holds m_lock alone.
void RegularExpressionCache::removeUnusedExpression()
{
    m_index.erase(m_entries.back().first);
    m_entries.pop_back();
    updateFront();
}

/// The caller holds m_lock alone, or m_listMutex beside sharing m_lock.
void RegularExpressionCache::updateFront()
{
    m_front.store(m_entries.empty() ? nullptr : &m_entries.front(), std::memory_order_relaxed);
}

} // namespace veltor::utils
