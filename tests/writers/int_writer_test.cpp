// The frame of the trace writer: file, messages, dispatch, order of tables, times.
#include <limits>

#include <gmock/gmock.h>

#include "tests/writers/int_writer_fixture.h"

namespace qumetra::test {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using Time = IntWriterV2::TimeConversion;

TEST_F(IntWriter, InitMakesTheFileAndTakesTheContinuousModeForTheSame) {
  EXPECT_EQ(m_writer->init(m_area.file("out"), true), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(IntWriter, FileThatCannotBeMadeWarnsByTagAndFails) {
  writeFile(m_area.file("file"), "");
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  m_log.environment().enabledTags.add(kTag);
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(m_writer->init(m_area.file("file/out"), false), 1);
  ::testing::internal::GetCapturedStderr();
  const std::string path = m_area.file("file/out_trace.csv");
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Could not create " + path + "\n"));
  EXPECT_EQ(m_writer->fini(), 1);
  EXPECT_EQ(warnings().back(), "WARNING: Output file " + path + " does not exist\n");
}

TEST_F(IntWriter, FiniWithoutAFileWarnsAndFails) {
  EXPECT_EQ(m_writer->fini(), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Output file  does not exist\n"));
}

TEST_F(IntWriter, TextBeforeAFileIsOpenIsDropped) {
  EXPECT_EQ(m_writer->writeMessage(textOf("too early")), 0);
  ASSERT_EQ(m_writer->init(m_area.file("out"), false), 0);
  EXPECT_EQ(report(), "");
}

TEST_F(OpenIntWriter, SecondFiniWarnsAndFailsAndLeavesTheFile) {
  EXPECT_EQ(m_writer->writeMessage(textOf("text")), 0);
  EXPECT_EQ(report(), "text\n");
  EXPECT_EQ(m_writer->fini(), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Output file " + m_area.file("out_trace.csv") +
                                      " does not exist\n"));
  EXPECT_EQ(m_writer->writeMessage(textOf("too late")), 0);
  EXPECT_EQ(readFile(m_area.file("out_trace.csv")), "text\n");
}

TEST_F(OpenIntWriter, TextsAloneGiveTheirLinesAndNothingElse) {
  m_writer->writeMessage(textOf("first"));
  m_writer->writeMessage(textOf("second\nline"));
  EXPECT_EQ(report(), "first\nsecond\nline\n");
}

TEST_F(OpenIntWriter, TextIsWrittenWithItsZeroBytes) {
  m_writer->writeMessage(textOf(std::string("before\0after", 12)));
  EXPECT_EQ(report(), std::string("before\0after\n", 13));
}

TEST_F(OpenIntWriter, TextsStandAboveAllTables) {
  add(sampledValue(1000).value(m_cpu0, 5));
  m_writer->writeMessage(textOf("late"));
  EXPECT_EQ(report().substr(0, 20), "late\n\nMetric - CPU0\n");
}

TEST_F(OpenIntWriter, SecondPassGoesOnWithTheTablesOfTheFirst) {
  add(sampledValue(1000).value(m_cpu0, 5));
  report();
  start();
  add(sampledValue(2000).value(m_cpu0, 6));
  const std::string text = report();
  EXPECT_THAT(text, HasSubstr("\n       1,                   0.00,"));
  EXPECT_THAT(text, HasSubstr("\n       2,                 500.00,"));
}

TEST_F(OpenIntWriter, FullDiskIsAnErrorInTheLogAndNoMore) {
  m_writer->writeMessage(textOf(std::string(100, 'x')));
  const FullDisk full(50);
  EXPECT_EQ(m_writer->fini(), 0);
  EXPECT_THAT(m_log.errors(),
              ElementsAre(::testing::Pair(
                  1, "ERROR: Could not write all of " + m_area.file("out_trace.csv") + "\n")));
}

// The clock.

TEST_F(IntWriter, FrequencyOfZeroWarnsAndFailsButTheRestIsTaken) {
  EXPECT_EQ(system(0, 4000, 5), 1);
  EXPECT_THAT(warnings(), ElementsAre("WARNING: Frequency of timestamps is zero. Please check the "
                                      "clock frequency in the system metadata.\n"));
  EXPECT_EQ(m_writer->convertTicksToTime(0, Time::ToMilliseconds), "nan");
  EXPECT_EQ(m_writer->convertTicksToTime(7, Time::ToMicroseconds), "inf");
  EXPECT_EQ(add(sampledValue(3999)), 1);
}

TEST_F(IntWriter, FrequencyThatIsNoNumberIsTaken) {
  EXPECT_EQ(system(std::numeric_limits<float>::quiet_NaN()), 0);
  EXPECT_EQ(m_writer->convertTicksToTime(7, Time::ToMicroseconds), "nan");
}

TEST_F(IntWriter, SystemMessageWithoutMetadataFails) {
  EXPECT_EQ(m_writer->writeMessage(pwr::SystemMessage()), 1);
  EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(IntWriter, BeforeASystemMessageTimesAreDivisionsByZero) {
  EXPECT_EQ(m_writer->convertTicksToTime(0, Time::ToMicroseconds), "nan");
  EXPECT_EQ(m_writer->convertTicksToTime(1, Time::ToMilliseconds), "inf");
}

TEST_F(IntWriter, MicrosecondsHaveTwoDecimalsAndMillisecondsByResolution) {
  system(2, 0, 0);
  EXPECT_EQ(m_writer->convertTicksToTime(123'457, Time::ToMicroseconds), "61728.50");
  EXPECT_EQ(m_writer->convertTicksToTime(123'457, Time::ToMilliseconds), "61.73");
  system(2, 0, 1);
  EXPECT_EQ(m_writer->convertTicksToTime(123'457, Time::ToMicroseconds), "61728.50");
  EXPECT_EQ(m_writer->convertTicksToTime(123'457, Time::ToMilliseconds), "61.728");
  system(2, 0, 999);
  EXPECT_EQ(m_writer->convertTicksToTime(123'457, Time::ToMilliseconds), "61.728");
  system(2, 0, 1000);
  EXPECT_EQ(m_writer->convertTicksToTime(123'457, Time::ToMilliseconds), "61.73");
  system(2, 0, 0x80000001U);
  EXPECT_EQ(m_writer->convertTicksToTime(123'457, Time::ToMilliseconds), "61.73");
}

TEST_F(IntWriter, TicksAreUnsigned) {
  system(1, 0);
  EXPECT_EQ(m_writer->convertTicksToTime(~0UL, Time::ToMicroseconds), "18446744073709551616.00");
}

TEST_F(IntWriter, UnknownConversionGivesZero) {
  system();
  EXPECT_EQ(m_writer->convertTicksToTime(7, static_cast<Time>(2)), "0.00");
}

TEST_F(OpenIntWriter, ClockMayChangeBetweenSamplesOfEqualTicks) {
  add(sampledValue(3000).value(m_cpu0, 5));
  system(4, 1000, 1);
  add(sampledValue(3000).value(m_cpu0, 6));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0\n"
            "       1,                1000.00,        100.00,    5\n"
            "       2,                 500.00,        50.000,    6\n\n");
}

TEST_F(OpenIntWriter, SampleFromBeforeTheStartIsDroppedWhole) {
  EXPECT_EQ(add(sampledValue(999).value(m_cpu0, 5)), 1);
  EXPECT_THAT(
      warnings(),
      ElementsAre("WARNING: Timestamp of the sample is less than the global start timestamp.\n"));
  EXPECT_EQ(report(), "");
}

TEST_F(OpenIntWriter, SampleOfTheStartIsKeptAndShowsZero) {
  EXPECT_EQ(add(sampledValue(1000).value(m_cpu0, 5)), 0);
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), CPU0\n"
            "       1,                   0.00,        100.00,    5\n\n");
}

// Warnings show by verbosity or tag; without them the failure takes the same course.

TEST_F(OpenIntWriter, WarningsAreSilentBelowTheLevelUnlessTheTagIsOn) {
  m_log.environment().verbosity = PluginEnvironment::kErrors;
  EXPECT_EQ(add(sampledValue(999)), 1);
  EXPECT_THAT(warnings(), IsEmpty());
  m_log.environment().enabledTags.add(kTag);
  EXPECT_EQ(add(sampledValue(999)), 1);
  EXPECT_EQ(warnings().size(), 1U);
}

// Dispatch and views.

TEST_F(OpenIntWriter, ValueMetricAndUnknownTypesHaveOnePlainTable) {
  add(sampledValue(1000).in(m_power).value(m_cpu0, 5));
  Sample unknown(static_cast<pwr::Metric::MetricType>(5), 1000, 2);
  add(unknown.in(m_power).value(m_cpu0, 6));
  const std::string head = "Sample #, Continuous Time (usec), Duration (ms), Power (mW)\n";
  EXPECT_EQ(report(), "\nMetric - CPU0\n" + head +
                          "       1,                   0.00,        100.00,          5\n\n" +
                          "\nMetric - CPU0\n" + head +
                          "       1,                   0.00,        100.00,          6\n\n");
}

TEST_F(OpenIntWriter, DeltaMetricWithoutRateConversionHasItsPlainTableOnlyAndSaysNothing) {
  add(delta(1000).in(m_energy).value(m_cpu0, 5));
  add(delta(1000).value(m_cpu0, 5));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), Energy (mJ)\n"
            "       1,                   0.00,        100.00,           5\n"
            "       2,                   0.00,        100.00,           5\n\n");
  EXPECT_THAT(warnings(), IsEmpty());
}

TEST_F(OpenIntWriter, DeltaMetricWithRateConversionHasASecondTable) {
  m_energy.setRateConversion(&m_power, 3);
  add(delta(1000).in(m_energy).declare(&m_cpu0, &m_c1).value(m_cpu0, 5, &m_c1));
  EXPECT_EQ(report(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), C1 (mJ)\n"
            "       1,                   0.00,        100.00,       5\n"
            "\n"
            "Metric - CPU0 : Instantaneous rate\n"
            "Sample #, Continuous Time (usec), Duration (ms), C1 (mW)\n"
            "       1,                   0.00,        100.00,  150.00\n\n");
}

constexpr const char* kTimes =
    "Metric - CPU0 : Residency Time\n"
    "Sample #, Continuous Time (usec), Duration (ms), C6 (usec)\n"
    "       1,                   0.00,        100.00,  25000.00\n\n";
constexpr const char* kPercentages =
    "Metric - CPU0 : Residency Percentage\n"
    "Sample #, Continuous Time (usec), Duration (ms), C6 (%)\n"
    "       1,                   0.00,        100.00,  25.00\n\n";

class Views : public OpenIntWriter {
 protected:
  std::string residencyReport() {
    add(residency(1000).in(*pwr::Quantity::time()).value(m_cpu0, 50'000, &m_c6));
    return report();
  }
};

TEST_F(Views, ViewZeroGivesTimesAndPercentages) {
  wantView(0);
  EXPECT_EQ(residencyReport(), std::string("\n") + kTimes + kPercentages);
}

TEST_F(Views, ViewOneGivesPercentagesOnly) {
  EXPECT_EQ(wantView(1), 0);
  EXPECT_EQ(residencyReport(), std::string("\n") + kPercentages);
}

TEST_F(Views, ViewTwoGivesTimesOnly) {
  wantView(2);
  EXPECT_EQ(residencyReport(), std::string("\n") + kTimes);
}

TEST_F(Views, ViewThreeGivesNothingAtAll) {
  wantView(3);
  EXPECT_EQ(residencyReport(), "");
}

TEST_F(Views, LaterMessageOfViewZeroDoesNotClearTheView) {
  wantView(1);
  wantView(0);
  EXPECT_EQ(residencyReport(), std::string("\n") + kPercentages);
}

TEST_F(Views, ViewOfOneMetricIsNotThatOfAnother) {
  wantView(3, 2);
  EXPECT_EQ(residencyReport(), std::string("\n") + kTimes + kPercentages);
}

// The switches.

TEST_F(Views, ResidencyTicksStandInATableOfThePlainTitle) {
  const Variable ticks("PW_DO_TIMELINE_RESIDENCY_TICKS", "Y");
  restart();
  wantView(2);
  EXPECT_EQ(residencyReport(),
            "\nMetric - CPU0\n"
            "Sample #, Continuous Time (usec), Duration (ms), C6 (s)\n"
            "       1,                   0.00,        100.00,  50000\n\n");
}

TEST_F(Views, ResidencyTicksStandBeforePercentages) {
  const Variable ticks("PW_DO_TIMELINE_RESIDENCY_TICKS", "y");
  restart();
  const std::string text = residencyReport();
  EXPECT_EQ(text.substr(0, 15), "\nMetric - CPU0\n");
  EXPECT_THAT(text, HasSubstr(std::string("\n\n") + kPercentages));
}

class TscSwitch : public OpenIntWriter, public ::testing::WithParamInterface<const char*> {
 protected:
  std::string header() {
    const Variable tsc("PW_DO_TIMELINE_TSC", GetParam());
    restart();
    add(sampledValue(1234).value(m_cpu0, 5));
    return report();
  }
};

class TscSwitchOn : public TscSwitch {};
class TscSwitchOff : public TscSwitch {};

TEST_P(TscSwitchOn, ShowsTicks) {
  EXPECT_EQ(header(),
            "\nMetric - CPU0\n"
            "Sample #, Timestamp, Duration (ms), CPU0\n"
            "       1,      1234,        100.00,    5\n\n");
}

TEST_P(TscSwitchOff, ShowsTimes) { EXPECT_THAT(header(), HasSubstr("Continuous Time (usec)")); }

INSTANTIATE_TEST_SUITE_P(SingleLetter, TscSwitchOn, ::testing::Values("Y", "y"));
INSTANTIATE_TEST_SUITE_P(OtherTexts, TscSwitchOff, ::testing::Values("yes", "1", "", "Y "));

// The registry and the order of the file.

TEST_F(OpenIntWriter, StoreOfKeysIsMadeOnceWithTheFirstTitleAndDefault) {
  BackingStoreWrapper* store = m_writer->getStore("First", 1, 2, "a");
  ASSERT_NE(store, nullptr);
  EXPECT_EQ(m_writer->getStore("Second", 1, 2, "b"), store);
  EXPECT_NE(m_writer->getStore("First", 1, 3, "a"), store);
  EXPECT_NE(m_writer->getStore("First", 2, 2, "a"), store);
  EXPECT_EQ(report(), "\nFirst\n\n\nFirst\n\n\n\nFirst\n\n\n");
}

TEST_F(OpenIntWriter, WithoutAPlaceForItsStoreATableIsNullAndLeavesNothing) {
  {
    const NoPlaceForTempFiles nowhere;
    EXPECT_EQ(m_writer->getStore("First", 1, 2, "a"), nullptr);
    EXPECT_THAT(warnings(), ElementsAre("WARNING: Failed to initialize buffer.\n"));
    Sample sample = sampledValue(1000);
    sample.value(m_cpu0, 5);
    EXPECT_EQ(
        m_writer->writeSampledGeneric(sample.message(), 0, IntWriterV2::Calculations::NoCalculation,
                                      nullptr, "", "n/a"),
        1);
    EXPECT_EQ(add(sample), 0);
    Sample traced = event(1000);
    traced.value(m_cpu0, 5);
    EXPECT_EQ(m_writer->writeTracedMetric(traced.message()), 1);
  }
  EXPECT_EQ(report(), "");
}

TEST_F(OpenIntWriter, TracedTablesAndThoseOfEntityZeroComeFirstByMetricThenAllOthers) {
  pwr::EntityHandle& zero = entityOf(0, "Zero");
  add(sampledValue(1000, 9).named("nine").value(m_cpu1, 5).value(m_cpu0, 5).value(zero, 5));
  add(sampledValue(1000, 8).named("eight").value(m_cpu0, 5).value(zero, 5));
  add(event(1000).named("seven").value(m_cpu0, 5));
  Sample last = event(1000);
  last.metric.metricId = 10;
  add(last.named("ten").value(m_cpu0, 5));
  std::vector<std::string> titles;
  const std::string text = report();
  for (std::size_t at = 0; (at = text.find(" - ", at)) != std::string::npos; ++at) {
    const std::size_t start = text.rfind('\n', at) + 1;
    titles.push_back(text.substr(start, text.find('\n', at) - start));
  }
  EXPECT_THAT(titles, ElementsAre("seven - CPU0", "eight - Zero", "nine - Zero", "ten - CPU0",
                                  "eight - CPU0", "nine - CPU0", "nine - CPU1"));
}

TEST_F(OpenIntWriter, OneEmptyLinePartsTablesOfOneKeyAndTwoPartThoseOfDifferentKeys) {
  m_writer->getStore("a", 1, 1, "");
  m_writer->getStore("b", 1, 2, "");
  m_writer->getStore("c", 2, 1, "");
  EXPECT_EQ(report(), "\na\n\n\nb\n\n\n\nc\n\n\n");
}

}  // namespace
}  // namespace qumetra::test
