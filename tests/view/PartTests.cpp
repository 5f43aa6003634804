#include "host/Tags.h"
#include "media/Settings.h"
#include "media/Shrink.h"
#include "tests/view/Support.h"
#include "view/Command.h"
#include "view/FrameStore.h"
#include "view/Placement.h"
#include "view/Proxy.h"
#include "view/Sequence.h"

#include <QTemporaryDir>

#include <random>

namespace view::test {
namespace {

TEST(Command, SettingsBringANewToolToTheSameValues) {
    std::mt19937 dice(3);
    for (host::Registry* tool : media::Tools()) {
        SCOPED_TRACE(media::PlainName(*tool));
        Look look(*tool);
        for (host::Input* input : look.Op().Inputs()) {
            if (!media::IsControl(*input) || dice() % 3 == 0) continue;
            const std::size_t entries = input->GetAttrList(host::kTagEntry).size();
            const double value =
                entries ? static_cast<double>(dice() % entries) : static_cast<double>(dice() % 100) / 7.0;
            if (input->DataType() == host::Input::Type::Text)
                look.WriteText(*input, "it's a file");
            else
                look.Write(*input, {value, 0.1});
        }
        host::FusionDoc document;
        const host::Ref<host::Operator> fresh(tool->NewOperator(&document));
        for (const std::string& setting : SettingsFor(look.Op())) media::ApplySetting(*fresh, setting);
        const Values wanted = ValuesOf(look.Op()), got = ValuesOf(*fresh);
        for (std::size_t i = 0; i < wanted.size(); ++i)
            EXPECT_TRUE(got[i].SameValue(wanted[i])) << look.Op().Inputs()[i]->Id();
    }
}

TEST(Command, WordsAreQuotedForAShell) {
    EXPECT_EQ(ShellLine({"render", "Clean", "-o", "a b'c.png", ""}), "k7 render Clean -o 'a b'\\''c.png' ''");
}

TEST(Sequence, IsFoundFromOneOfItsFrames) {
    const QTemporaryDir folder;
    for (const char* name :
         {"a.0009.png", "a.0010.png", "b9.png", "b10.png", "c.0001.png", "v2_plate.png", "d.png"}) {
        QFile file(folder.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    }
    const std::pair<const char*, const char*> cases[] = {{"a.0010.png", "a.%04d.png"},
                                                         {"b9.png", "b%d.png"},
                                                         {"c.0001.png", "c.0001.png"},
                                                         {"v2_plate.png", "v2_plate.png"},
                                                         {"d.png", "d.png"}};
    for (const auto& [name, wanted] : cases)
        EXPECT_EQ(SequenceOf(folder.filePath(name)), folder.filePath(wanted));
}

TEST(Proxy, PixelsAreMeansOfTheirSquares) {
    const host::Ref<host::Image> image(host::Image::Make(5, 4, host::Depth::Float));
    for (int y = 0; y < 4; ++y) {
        std::vector<float> row(20);
        for (int i = 0; i < 20; ++i)
            row[static_cast<std::size_t>(i)] = static_cast<float>(i / 4 + 10 * y + 100 * (i % 4));
        image->WriteRow(y, row.data());
    }
    const host::Ref<host::Image> half(media::Shrunk(*image, 2));
    ASSERT_EQ(half->Width, 2); // what is left of a row goes
    ASSERT_EQ(half->Height, 2);
    EXPECT_EQ(PixelsOf(*half),
              (std::vector<float>{5.5f, 105.5f, 205.5f, 305.5f, 7.5f, 107.5f, 207.5f, 307.5f, //
                                  25.5f, 125.5f, 225.5f, 325.5f, 27.5f, 127.5f, 227.5f, 327.5f}));
    const host::Ref<host::Image> dot(host::Image::Make(1, 1, host::Depth::Int8));
    const host::Ref<host::Image> less(media::Shrunk(*dot, 4));
    EXPECT_EQ(less->Width, 1);
}

TEST(FrameStore, DropsWhatLiesFurthestAway) {
    FrameStore store;
    const auto enter = [&](int frame) {
        auto shot = std::make_shared<Shot>();
        shot->frame = frame;
        shot->after = std::shared_ptr<host::Image>(host::Image::Make(10, 10, host::Depth::Float),
                                                   [](host::Image* image) { image->Recycle(); });
        store.Enter(shot);
    };
    store.SetRoom(3 * 1600); // of three frames
    for (const int frame : {1, 2, 3, 9, 4}) enter(frame);
    EXPECT_EQ(store.Frames(), (std::vector<int>{2, 3, 4}));
}

TEST(Placement, ZoomKeepsThePointUnderThePointer) {
    Placement placement;
    placement.SetSizes({960, 540}, {1000, 800});
    EXPECT_LT(placement.Shown().width(), 1000.0);
    const QPointF pointer(333.0, 222.0), before = placement.ToPicture(pointer);
    for (const double factor : {1.3, 4.0, 0.2}) {
        placement.ZoomBy(factor, pointer);
        EXPECT_NEAR(placement.ToPicture(pointer).x(), before.x(), 1e-9);
        EXPECT_NEAR(placement.ToPicture(pointer).y(), before.y(), 1e-9);
    }
    EXPECT_NEAR(placement.ToView(before).x(), pointer.x(), 1e-6);
    EXPECT_NEAR(placement.ToView(before).y(), pointer.y(), 1e-6);
}

} // namespace
} // namespace view::test
