// The expression language: binding and associativity, quotes, separators and comments, the
// statement forms and name checks, the type rules, value semantics of channels, and bounded
// nesting. Expected numbers are worked by hand; expected samples are computed here in 32-bit
// floats as the rule states.

#include "exprfixture.h"
#include "virtualchannel.h"

#include <QString>

#include <cmath>
#include <limits>

namespace {

using ExprLanguage = ExprTest;

} // namespace

TEST_F(ExprLanguage, BindingAssociativityAndNumbers)
{
    const QStringList log = run("2^3^2; 1 + 2 * 3; (1 + 2) * 3; 8-4-2; 8/4/2; -3+4; 1/0;"
                                "complex(1,2)*complex(3,4); 1 - complex(1,2); 6 / complex(0,2); .5+1.");
    const QStringList expected = {"No Error!",
                                  "[2^3^2] Result = 64.000000",
                                  "[1 + 2 * 3] Result = 7.000000",
                                  "[(1 + 2) * 3] Result = 9.000000",
                                  "[8-4-2] Result = 2.000000",
                                  "[8/4/2] Result = 1.000000",
                                  "[-3+4] Result = 1.000000",
                                  "[1/0] Result = inf",
                                  "[complex(1,2)*complex(3,4)] Result = -5.000000+j10.000000",
                                  "[1 - complex(1,2)] Result = 0.000000-j2.000000",
                                  "[6 / complex(0,2)] Result = 0.000000-j3.000000",
                                  "[.5+1.] Result = 1.500000"};
    EXPECT_EQ(log, expected);

    // No unary operator and no exponent: a sign survives only at the head of a number.
    EXPECT_EQ(messages("2*-3"), QStringList{"Error: Operator [*] Lossing Right-operand!"});
    EXPECT_EQ(messages("*3"), QStringList{"Error: Operator [*] Lossing Left-operand!"});
    EXPECT_EQ(messages("-x"), QStringList{"Error: Invalid characters in the conatant [-x]!"});
    EXPECT_EQ(messages("1e5"), QStringList{"Error: Invalid characters in the conatant [1e5]!"});
    EXPECT_EQ(messages("1e-5"), QStringList{"Error: Invalid characters in the conatant [1e]!"});
    EXPECT_EQ(messages("1.2.3"), QStringList{"Error: Invalid characters in the conatant [1.2.3]!"});
}

TEST_F(ExprLanguage, ParenthesesAreCheckedAtEveryLevel)
{
    program.Compile(r.file, "x = sin(1");
    ASSERT_EQ(ExpMessages.size(), 2u);
    EXPECT_EQ(ExpMessages[0], std::make_pair(7, QString("Error: [(] not match to [)]!")));
    EXPECT_EQ(ExpMessages[1].second, "Error: Unknown variant name [sin(1]!");
    EXPECT_EQ(messages("sin 1"), QStringList{"Error: Unknown variant name [sin 1]!"});
    program.Compile(r.file, "1+2)");
    ASSERT_FALSE(ExpMessages.empty());
    EXPECT_EQ(ExpMessages[0], std::make_pair(3, QString("Error: [)] not match to [(]!")));
    // One surplus parenthesis, seen again inside the stripped pair: the same message twice.
    EXPECT_EQ(messages("((1)"), QStringList({"Error: [(] not match to [)]!", "Error: [(] not match to [)]!",
                                             "Warning: if [(1] is a channel name, require [\"] at begin!",
                                             "Warning: if [(1] is a channel name, require [\"] at end!",
                                             "Error: Unknown channel or variant name [(1]!"}));
}

TEST_F(ExprLanguage, QuotesSeparatorsAndComments)
{
    ua->config->ch_id = "A+B;C=D,E";
    // Operators, semicolons, equals and commas inside quotes belong to the name; semicolons and
    // commas inside parentheses separate nothing; empty statements and comment lines are skipped.
    const QStringList log = run("// a comment line\n"
                                "x = (\"A+B;C=D,E\") ;; ; y = atan2(1, 1) // tail\n"
                                "\"A+B;C=D,E\"");
    EXPECT_EQ(log, QStringList({"No Error!", "[x] Return originally Channel [A+B;C=D,E]!",
                                "[y] Result = 0.785398, Stored in [y]",
                                "[\"A+B;C=D,E\"] Return originally Channel [A+B;C=D,E]!"}))
        << log.join('\n').toStdString();
    EXPECT_EQ(messages("y = sin(1;2)"), QStringList{"Error: Invalid characters in the conatant [1;2]!"});

    // The comment cut does not heed quotes, and a name needs its quotes.
    EXPECT_EQ(messages("\"A//B\""), QStringList({"Warning: if [\"A] is a channel name, require [\"] at end!",
                                                 "Error: Unknown channel or variant name [A]!"}));
    EXPECT_EQ(messages("#IA\""), QStringList({"Warning: if [#IA\"] is a channel name, require [\"] at begin!",
                                              "Error: Unknown channel or variant name [#IA]!"}));
    EXPECT_EQ(messages("\"\""), QStringList{"Error: Invalid Expression [\"\"]!"});
    EXPECT_EQ(messages(""), QStringList{"Error: Expression is empty!"});
}

TEST_F(ExprLanguage, StatementFormsAndNameChecks)
{
    // A quoted name with a constant result is a plain variable of that name.
    EXPECT_EQ(run("x = 1; y = x + 1; \"z\" = y; Z * 3"),
              QStringList({"No Error!", "[x] Result = 1.000000, Stored in [x]",
                           "[y] Result = 2.000000, Stored in [y]", "[z] Result = 2.000000, Stored in [z]",
                           "[Z * 3] Result = 6.000000"}));
    EXPECT_EQ(messages("a = 1 ; a = 2"),
              QStringList{"Error: Result channel name [a] Overlap to variant name!"});
    EXPECT_EQ(messages("\"ua\" = 1"), QStringList{"Error: Overlaped Result channel name [ua]!"});
    EXPECT_EQ(messages("SIN = 1"), QStringList{"Error: Result channel name [SIN] Overlap to Sys-Func Name!"});
    EXPECT_EQ(messages("\"Pi\" = 1"),
              QStringList{"Error: Result channel name [Pi] Overlap to Sys-Constant Name!"});
    EXPECT_EQ(messages("a\"b\" = 1"), QStringList{"Error: Invalid characters in the temp-variant name!"});
    EXPECT_EQ(messages("\"\" = 1"), QStringList{"Error: [Result Channel Name] can not empty!"});
    EXPECT_EQ(messages("x = "), QStringList{"Error: Expression is empty!"});
    EXPECT_EQ(messages("\"V\" w = 1"), QStringList{"Warning: [w] is unwanted before [=]!"});
    EXPECT_EQ(messages("\"V = 1"),
              QStringList({"Warning: if [\"V = 1] is a channel name, require [\"] at end!",
                           "Error: Unknown channel or variant name [V = 1]!"}));
    EXPECT_EQ(messages("UA"), QStringList{"Error: Unknown variant name [UA]!"});
    program.Compile(r.file, QString::fromUtf8("\xc3\xa9 = 1\nfoo"));
    ASSERT_EQ(ExpMessages.size(), 1u);
    EXPECT_EQ(ExpMessages[0].first, 6); // in characters of the script, not bytes

    // The script ends at a NUL character, as a C string does; a name with a NUL inside is
    // compared up to it, so a file's channel "IA" still gets the suffix.
    EXPECT_EQ(messages(QString("x = 1") + QChar(0) + "\"UA\" = 1"), QStringList{});
    QString noMessage;
    const CChnMapAnalog *suffixed = MakeVirtualChannel(r.file, QByteArray("IA\0tail", 7), noMessage);
    ASSERT_NE(suffixed, nullptr);
    EXPECT_STREQ(suffixed->Name(), "IA Virtual Channel");

    // A virtual channel's name may be taken again: the new result replaces it.
    run("\"V\" = \"UA\" * 2");
    const size_t channels = r.file.analogMaps.size();
    EXPECT_EQ(run("\"V\" = \"UA\" * 3").value(1), "[V] Out a new Virtual Channel [V]!");
    EXPECT_EQ(r.file.analogMaps.size(), channels);
    EXPECT_EQ(channel("V")->Values()[5], ua->Values()[5] * 3.0f);
}

TEST_F(ExprLanguage, ChannelArithmeticAndTypeRules)
{
    const float *x = ua->Values();
    const std::vector<float> y = curve("\"UA\" * 2 + 1");
    const std::vector<float> z = curve("10 - \"UA\" / 4");
    const std::vector<float> w = curve("\"UA\" - \"IA\"");
    const std::vector<float> p = curve("\"IA\" * 1 + 2 ^ (\"IA\" / 5)");
    ASSERT_EQ(p.size(), 400u);
    for (int i = 0; i < 400; ++i) {
        ASSERT_EQ(y[size_t(i)], x[i] * 2.0f + 1.0f) << i;
        ASSERT_EQ(z[size_t(i)], 10.0f - x[i] / 4.0f) << i;
        ASSERT_EQ(w[size_t(i)], x[i] - ia->Values()[i]) << i;
        const float power = float(std::pow(2.0, double(ia->Values()[i] / 5.0f)));
        ASSERT_EQ(p[size_t(i)], ia->Values()[i] * 1.0f + power) << i;
    }
    // The result takes its description from its left channel operand.
    EXPECT_EQ(channel("R")->config->uu, "A");
    EXPECT_TRUE(std::isinf(curve("\"UA\" / 0")[3]));

    // A channel on the left of a complex number is refused; on the right it stays as it is.
    EXPECT_EQ(messages("\"UA\" * complex(1,1)"),
              QStringList{"Error: Channel datas can not [*] with complex number!"});
    EXPECT_EQ(curve("complex(1,1) * \"UA\"")[5], x[5]);
    EXPECT_EQ(messages("complex(1,1)^2"),
              QStringList{"Error: Left-operand of [^] can not be a complex number!"});
    EXPECT_EQ(messages("2^complex(1,1)"),
              QStringList{"Error: Right-operand of [^] can not be a complex number!"});

    // A power sets no type: the quoted result stays a temporary channel outside the recording,
    // and a function that wants a channel refuses it.
    const size_t channels = r.file.analogMaps.size();
    EXPECT_EQ(run("\"Y\" = \"UA\"^2"),
              QStringList({"No Error!", "[Y] Out a Unnamed temporary Channel [Y]!"}));
    EXPECT_EQ(r.file.analogMaps.size(), channels);
    EXPECT_EQ(messages("eff(\"UA\"^2)"), QStringList{"Error: eff() parameter 1 type error!"});
    EXPECT_EQ(run("\"UA\" + 0; \"UA\""),
              QStringList({"No Error!", "[\"UA\" + 0] Out a Unnamed temporary Channel!",
                           "[\"UA\"] Return originally Channel [UA]!"}));

    // Value semantics: a variable's channel is copied at each use, never changed in place.
    run("v = \"UA\" * 1; w2 = v * 2; \"R\" = v");
    EXPECT_EQ(channel("R")->Values()[5], x[5]);
}

TEST_F(ExprLanguage, DeepNestingIsRefusedNotACrash)
{
    const QString deep = QString(20000, '(') + "1" + QString(20000, ')');
    EXPECT_EQ(messages(deep), QStringList{"Error: Expression is nested too deeply!"});
    QString chain = "1";
    for (int i = 0; i < 5000; ++i)
        chain += "+1";
    EXPECT_EQ(messages(chain), QStringList{"Error: Expression is nested too deeply!"});
    QString calls = "1";
    for (int i = 0; i < 5000; ++i)
        calls = "abs(" + calls + ")";
    EXPECT_EQ(messages(calls), QStringList{"Error: Expression is nested too deeply!"});
    // Within the bound the same forms run.
    EXPECT_EQ(run(QString(300, '(') + "1" + QString(300, ')')).value(1).right(8), "1.000000");
}
