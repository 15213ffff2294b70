// One keystroke in the card number field: a key event into the real field of a real card
// screen (offscreen), through its should-change delegate (grouping, issuer, icon, CVV length,
// proceed state). The baseline does the same work on an identical screen, but with every issuer
// lookup compiling the issuer patterns anew, as the rules read when written out.
#include "Figures.h"

#include "flow/MainKovena.h"
#include "payment/CardIssuerRules.h"
#include "payment/CardViewController.h"
#include "platform/NavigationController.h"
#include "platform/Storyboard.h"

#include <QLabel>
#include <QPointer>
#include <QRegularExpression>
#include <QTest>

#include <benchmark/benchmark.h>

#include <array>
#include <memory>
#include <optional>

using namespace Qt::StringLiterals;

namespace kovena::bench {

namespace {

// Test numbers of four schemes (Visa, MasterCard, Amex, Maestro), typed in turn, so that the
// issuer is found early, late and in the ungrouped Maestro path.
constexpr std::array<const char *, 4> kNumbers
    = { "4111111111111111", "5555555555554444", "378282246310005", "6759649826438453" };

// The issuer as the rules read: every pattern compiled for this call.
QString freshIssuer(const QString &cardNumber)
{
    const QString subject = cardrules::issuerSearchText(cardNumber);
    for (const cardrules::IssuerRule &rule : cardrules::issuerRules) {
        const QRegularExpression re(rule.pattern.toString(), cardrules::issuerPatternOptions);
        if (re.isValid() && re.match(subject).hasMatch())
            return rule.issuer.toString();
    }
    return QString();
}

QString freshIcon(const QString &cardNumber)
{
    static constexpr std::pair<QStringView, QStringView> icons[] = {
        { CardUtils::CardIssuer::AMEX, u"ci_amex.png" },
        { CardUtils::CardIssuer::VISA, u"ci_visa.png" },
        { CardUtils::CardIssuer::MASTER, u"ci_mastercard.png" },
        { CardUtils::CardIssuer::MAESTRO, u"ci_maestro.png" },
        { CardUtils::CardIssuer::DINER, u"ci_diner.png" },
        { CardUtils::CardIssuer::JCB, u"ci_jcb.png" },
        { CardUtils::CardIssuer::DISCOVER, u"ci_discover.png" },
        { CardUtils::CardIssuer::LASER, u"ci_laser.png" },
        { CardUtils::CardIssuer::RUPAY, u"ci_rupee.png" },
    };
    const QString issuer = freshIssuer(cardNumber);
    for (const auto &[constant, icon] : icons) {
        if (issuer == constant)
            return icon.toString();
    }
    return QString();
}

bool isDigits(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

// The card number rule of the screen, written out with the fresh issuer lookups. It takes over
// the number field of a second card screen, so both run on identical widgets.
class FreshPatternNumberField : public QObject, public TextFieldDelegate
{
public:
    explicit FreshPatternNumberField(CardViewController *screen)
        : m_screen(screen)
    {
        TextField *field = screen->tfCardNumber;
        field->setDelegate(this);
        connect(field, &QLineEdit::textChanged, this, [this, field] { m_before = field->text(); });
        connect(field, &TextField::editingChanged, this, &FreshPatternNumberField::edited);
    }

    bool textFieldShouldChangeCharacters(
        TextField *, int start, int length, const QString &replacement) override
    {
        if (!isDigits(replacement))
            return false;
        const QString newText = QString(m_before).replace(start, length, replacement);
        QString digits;
        for (const QChar c : newText) {
            if (c >= u'0' && c <= u'9')
                digits.append(c);
        }
        const bool storedMaestro = freshIssuer(m_screen->card) == CardUtils::CardIssuer::MAESTRO;
        if (digits.isEmpty() || digits.size() > 16) {
            const qsizetype newLength = m_before.size() + replacement.size() - length;
            return newLength < (storedMaestro ? 20 : 17);
        }
        if (storedMaestro) {
            m_toShow = m_before.contains(u'-') ? QString(m_before).remove(u'-') + replacement : newText;
        } else {
            QString text;
            qsizetype next = 0;
            for (int group = 0; group < 3 && digits.size() - next > 4; ++group) {
                text += u"%1-"_s.arg(digits.mid(next, 4));
                next += 4;
            }
            m_toShow = text + digits.mid(next);
        }
        return true;
    }

    void reset() { m_screen->card.clear(); }

private:
    void edited()
    {
        const std::optional<QString> shown = std::exchange(m_toShow, std::nullopt);
        if (!shown)
            return;
        TextField *field = m_screen->tfCardNumber;
        field->setText(*shown);
        field->end(false);
        m_screen->card = QString(field->text()).remove(u'-');
        const QString icon = freshIcon(field->text());
        if (icon != m_iconShown) {
            m_iconShown = icon;
            if (icon.isEmpty())
                m_screen->iconCardIssuer->clear();
            else
                m_screen->iconCardIssuer->setPixmap(kovenaImage(icon));
        }
        m_screen->limitLength = m_screen->cardUtils.getCvvLength(m_screen->card);
        m_screen->enableButtonProceed(proceedAllowed());
    }

    // The proceed check up to the name on card, where it stops while only the number is typed;
    // past it the remaining checks are the screen's own.
    bool proceedAllowed() const
    {
        const QString &card = m_screen->card;
        if (card.isEmpty() || freshIssuer(card).isEmpty() || cardrules::characterCount(card) <= 12)
            return false;
        if (m_screen->name.isEmpty())
            return false;
        return m_screen->cardUtils.isButtonProceedEnabled(
            card, m_screen->name, m_screen->month, m_screen->year, m_screen->cvv);
    }

    CardViewController *m_screen;
    QString m_before;
    std::optional<QString> m_toShow;
    QString m_iconShown;
};

// A card screen shown in a window of its own, as the flow shows it.
struct CardScreen
{
    CardScreen()
    {
        window->resize(375, 667);
        screen = qobject_cast<CardViewController *>(
            mainKovenaStoryboard().instantiateViewController(u"CardViewController"_s));
        screen->amount = u"1250.00"_s;
        screen->merchantTransactionRefNumber = u"ORD-BENCH-1"_s;
        screen->collectorId = u"COL-1"_s;
        auto *nav = new NavigationController;
        nav->setViewControllers({ screen.data() });
        setRootViewController(window.get(), nav);
        window->show();
        if (!waitUntil([this] { return screen && screen->isViewLoaded(); }))
            qFatal("the card screen did not load");
    }
    std::unique_ptr<QWidget> window = std::make_unique<QWidget>();
    QPointer<CardViewController> screen;
};

struct Screens
{
    CardScreen measured;
    CardScreen baseline;
    FreshPatternNumberField fresh { baseline.screen };
};

Screens &screens()
{
    static Screens *made = [] {
        auto *s = new Screens;
        atShutdown([s] { delete s; });
        return s;
    }();
    return *made;
}

// One iteration is one key: the digits of each number in turn; between numbers the field is
// emptied with the clock stopped.
template<class Reset> void typeNumbers(benchmark::State &state, QLineEdit *field, Reset reset)
{
    std::size_t number = 0;
    std::size_t digit = 0;
    for (auto _ : state) {
        QTest::keyClick(field, kNumbers[number][digit]);
        if (kNumbers[number][++digit] == '\0') {
            state.PauseTiming();
            digit = 0;
            number = (number + 1) % kNumbers.size();
            field->clear();
            reset();
            QCoreApplication::processEvents();
            state.ResumeTiming();
        }
    }
}

void BM_Keystroke_CardNumber(benchmark::State &state)
{
    CardViewController *screen = screens().measured.screen;
    typeNumbers(state, screen->tfCardNumber, [screen] { screen->card.clear(); });
}

void BM_Keystroke_CardNumber_FreshPatterns(benchmark::State &state)
{
    Screens &all = screens();
    typeNumbers(state, all.baseline.screen->tfCardNumber, [&all] { all.fresh.reset(); });
}

// For reference, the floor: a plain QLineEdit with the card field's look taking the same keys,
// with no delegate at all.
void BM_Keystroke_PlainLineEdit(benchmark::State &state)
{
    static QLineEdit *plain = [] {
        auto *field = new QLineEdit;
        field->setStyleSheet(screens().measured.screen->tfCardNumber->styleSheet());
        field->resize(300, 40);
        field->show();
        atShutdown([field] { delete field; });
        return field;
    }();
    typeNumbers(state, plain, [] {});
}

BENCHMARK(BM_Keystroke_CardNumber);
BENCHMARK(BM_Keystroke_CardNumber_FreshPatterns);
BENCHMARK(BM_Keystroke_PlainLineEdit);

// Keeps each repetition's time per keystroke.
class RepetitionCollector : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context &) override { return true; }
    void ReportRuns(const std::vector<Run> &runs) override
    {
        for (const Run &run : runs) {
            if (run.run_type == Run::RT_Iteration && run.iterations > 0)
                perKey[run.run_name.function_name].push_back(
                    run.real_accumulated_time / double(run.iterations));
        }
    }
    std::map<std::string, std::vector<double>> perKey;
};

int keystrokeFigure(const Options &options)
{
    // Repetitions of the two interleaved in random order, so that a busy moment of the machine
    // falls on both alike.
    std::vector<std::string> args = { "kovena_bench", "--benchmark_filter=^BM_Keystroke_",
        "--benchmark_enable_random_interleaving=true",
        options.quick ? "--benchmark_repetitions=3" : "--benchmark_repetitions=15",
        options.quick ? "--benchmark_min_time=0.02" : "--benchmark_min_time=0.2" };
    std::vector<char *> argv;
    for (std::string &arg : args)
        argv.push_back(arg.data());
    int argc = int(argv.size());
    benchmark::Initialize(&argc, argv.data());
    RepetitionCollector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);

    const double ours = median(collector.perKey["BM_Keystroke_CardNumber"]);
    const double fresh = median(collector.perKey["BM_Keystroke_CardNumber_FreshPatterns"]);
    if (ours <= 0 || fresh <= 0)
        return 1;
    const double speedUp = fresh / ours;
    printRow({ u"keystroke: speed-up over fresh patterns"_s, micros(ours), micros(fresh), times(speedUp),
                 u">= 5x"_s, speedUp >= 5 },
        options);
    const double plain = median(collector.perKey["BM_Keystroke_PlainLineEdit"]);
    printRow({ u"keystroke: median per key"_s, micros(ours), micros(plain) + u" plain"_s, times(ours / plain),
                 u"< 20 us"_s, ours < 20e-6 },
        options);
    return 0;
}

[[maybe_unused]] const bool registered = registerFigure("keystroke", keystrokeFigure);

} // namespace

} // namespace kovena::bench
