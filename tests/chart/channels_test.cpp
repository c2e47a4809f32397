#include <gtest/gtest.h>

#include <sstream>

#include "support/chart_file.h"
#include "support/recorder.h"

namespace {

class Channels : public testing::Test {
protected:
    void SetUp() override { recorder::Clear(); }
    void TearDown() override { recorder::Clear(); }

    // Loads with both devices and lists all that the chart holds, in file order.
    std::string Objects(const std::string& text) {
        recorder::EmptySlots();
        chart_ = LoadChart(Lines(text), recorder::Display(), recorder::Sound());
        if (!chart_) return "refused";
        std::ostringstream out;
        List(out, "bgm", chart_->m_pBgm, chart_->m_nBgm);
        List(out, "bga", chart_->m_pBga, chart_->m_nBga);
        List(out, "note", chart_->m_pNote, chart_->m_nNote);
        for (int i = 0; i < chart_->m_nTempo; ++i) {
            const BmsObject& o = chart_->m_pTempo[i];
            out << "tempo " << o.nChannel << " " << o.nMeasure << "+" << o.dPos << " " << o.dValue << "; ";
        }
        for (int i = 0; i < chart_->m_nLength; ++i) {
            out << "length " << chart_->m_pLength[i].nMeasure << " " << chart_->m_pLength[i].dLength << "; ";
        }
        return out.str();
    }

    void List(std::ostream& out, const char* name, const BmsObject* list, int count) {
        for (int i = 0; i < count; ++i) {
            const BmsObject& o = list[i];
            EXPECT_EQ(o.dTime, 0.0);
            out << name << ' ' << o.nChannel << ' ' << o.nMeasure << '+' << o.dPos << ' ' << Name(o) << "; ";
        }
    }

    std::string Name(const BmsObject& o) {
        if (!o.pObject) return "null";
        for (int i = 0; i < 576; ++i) {
            if (o.pObject == recorder::Sound()->m_pSlot[i]) return "sound" + std::to_string(i);
            if (o.pObject == recorder::Display()->m_apDib[i]) return "picture" + std::to_string(i);
        }
        const auto* def = static_cast<const BgaDef*>(o.pObject);
        return "def" + std::to_string(def - chart_->m_aBgaDef);
    }

    std::unique_ptr<CBMS> chart_;
};

TEST_F(Channels, PairsDivideTheMeasure) {
    EXPECT_EQ(Objects("#WAV01 a\n#00101:01\n"), "bgm 1 1+0 sound1; ");
    EXPECT_EQ(Objects("#00101:00010002\n"), "bgm 1 1+0.25 null; bgm 1 1+0.75 null; ");
    EXPECT_EQ(Objects("#00101:0102030\n"), "bgm 1 1+0 null; bgm 1 1+0.333333 null; bgm 1 1+0.666667 null; ");
    EXPECT_EQ(Objects("#00101:0000000000000001\n"), "bgm 1 1+0.875 null; ");
    EXPECT_EQ(Objects("#00101:0001000000000000\n"), "bgm 1 1+0.125 null; ");
    EXPECT_EQ(Objects("#00101:_0_0_0_1_\n"), "bgm 1 1+0.5 null; ");
    EXPECT_EQ(Objects("#00101:01\n#00101:0001\n"), "bgm 1 1+0 null; bgm 1 1+0.5 null; ");
}

TEST_F(Channels, EveryChannelAsWritten) {
    std::string text, notes;
    for (int channel = 0; channel < 100; ++channel) {
        char line[32];
        std::snprintf(line, sizeof line, "#001%02d:01\n", channel);
        text += line;
        const int tens = channel / 10, ones = channel % 10;
        if (tens >= 1 && tens <= 4 && ones >= 1) {
            notes += "note " + std::to_string(tens * 16 + ones) + " 1+0 null; ";
        }
    }
    EXPECT_EQ(Objects(text), "bgm 1 1+0 null; bga 3844 1+0 def1; bga 3846 1+0 def1; bga 3847 1+0 def1; " +
                                 notes + "tempo 3 1+0 1; tempo 8 1+0 130; length 1 1; ");
}

TEST_F(Channels, SoundNumbers) {
    EXPECT_EQ(Objects("#WAV0Z z.wav\n#00111:ZZ\n"), "note 17 1+0 sound35; ");
    EXPECT_EQ(Objects("#00111:G0\n"), "");
    EXPECT_EQ(chart_->m_nMeasure, 3);  // counted, though nothing came of it
    EXPECT_NE(chart_->m_pNote, nullptr);
    EXPECT_EQ(Objects("#WAV01 a.wav\n#00111:G00Z01G1\n"),
              "note 17 1+0.25 null; note 17 1+0.5 sound1; note 17 1+0.75 sound1; ");
}

TEST_F(Channels, PicturesWholeOrByDefinition) {
    recorder::SetPictures({"a.bmp"});
    const std::string files = "#BMP01 a.bmp\n#BMP02 a.bmp\n#BMP03 none.bmp\n";
    EXPECT_EQ(Objects(files + "#00104:0102\n"), "bga 4 1+0 picture1; bga 4 1+0.5 picture2; ");
    EXPECT_EQ(Objects(files + "#BGA01 02 0 0 10 10 0 0\n#00107:01\n"), "bga 3847 1+0 def1; ");
    EXPECT_EQ(Objects(files + "#BGA01 00 0 0 10 10 0 0\n#00107:01\n"),
              "bga 7 1+0 picture1; ");  // as if undefined
    EXPECT_EQ(Objects(files + "#00106:03\n"), "bga 3846 1+0 def3; ");
    EXPECT_EQ(Objects(files + "#00104:ZZ\n"), "bga 3844 1+0 def1295; ");
    EXPECT_EQ(Objects(files + "#00104:01\n#BGA01 02 0 0 10 10 0 0\n"), "bga 3844 1+0 def1; ");
}

TEST_F(Channels, Tempos) {
    const char* rows[][2] = {
        {"FF", "tempo 3 1+0 255; "},
        {"7g", "tempo 3 1+0 7; "},
        {"0G", "tempo 3 1+0 0; "},
        {"-1", "tempo 3 1+0 0; "},
        {" F", "tempo 3 1+0 0; "},
        {"G0", ""},
        {"1002", "tempo 3 1+0 16; tempo 3 1+0.5 2; "},
    };
    for (const auto& [data, tempos] : rows)
        EXPECT_EQ(Objects("#00103:" + std::string(data) + "\n"), tempos) << data;
    EXPECT_EQ(Objects("#BPM01 180.5\n#00108:01G1\n"), "tempo 8 1+0 180.5; tempo 8 1+0.5 180.5; ");
    EXPECT_EQ(Objects("#00108:01\n#BPM01 180.5\n"), "tempo 8 1+0 130; ");
    EXPECT_EQ(Objects("#BPM01 180.5\n#00108:0210\n"), "tempo 8 1+0 130; tempo 8 1+0.5 130; ");
}

TEST_F(Channels, Lengths) {
    EXPECT_EQ(Objects("#00102:0.75\n#00102:_2_\n#00002:\n#00102:x\n"),
              "length 1 0.75; length 1 2; length 0 0; length 1 0; ");
}

TEST_F(Channels, WithoutDevicesObjectsHaveNoSoundsAndPictures) {
    auto chart = LoadChart(Lines("#WAV01 a.wav\n#BMP01 a.bmp\n#00111:01\n#00104:01"));
    ASSERT_TRUE(chart);
    EXPECT_EQ(chart->m_pNote[0].pObject, nullptr);
    EXPECT_EQ(chart->m_pBga[0].pObject, &chart->m_aBgaDef[1]);
}

}  // namespace
