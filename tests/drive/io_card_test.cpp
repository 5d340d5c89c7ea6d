#include "drive/io_card.h"

#include "drive/testbed.h"
#include "drive/tremalink.h"

namespace orsanta {

using Io_Card = Testbed;

TEST_F(Io_Card, Maps_Eight_Channels_Once_And_Reads_And_Writes_Them) {
  InitDevice_PC_Local_Controler(1, 0);
  ConnectControlServer(L"", 0, nullptr);
  C_Io_Card card;
  card.Set_Io_Mode(2);  // any value but 0 stands for a card
  EXPECT_EQ(Calls_Of([&] { card.Map_Io(2, 15); }),
            "Exists(15); " + For_Each(0, 7, "SET_IOOUT_MAP(0, 15, 3, #, #); SET_IOIN_MAP(0, 15, 4, #, 0, #); ") +
                "Wait(0); ");
  card.Map_Io(8, 15);
  EXPECT_EQ(Count("SET_IO"), 16);

  simulator::Set_Input(5, 1);
  EXPECT_EQ(card.Get_Io(5), 1);
  for (const int value : {1, 256}) {  // the second is narrowed to eight bits
    card.Set_Io(7, value);
    EXPECT_EQ(simulator::Get_Output(7), value % 256);
  }
  simulator::Set_Io_Card_Missing(true);
  EXPECT_EQ(card.Get_Io(5), -1);
}

TEST_F(Io_Card, Without_A_Card_Pulses_Stand_In_For_Inputs) {
  C_Io_Card card;
  card.Set_Io_Mode(0);
  card.Map_Io(2, 15);
  card.Set_Io(1, 1);
  card.Set_Sim_Mask(4);
  for (const int channel : {0, 1, 2, 3}) EXPECT_EQ(card.Get_Io(channel), 3);  // share no bit with the mask
  EXPECT_EQ(Calls(), "Exists(15); ");
  card.Set_Sim_Rate(11);
  const int first = card.Get_Io(4);
  EXPECT_EQ(card.Get_Io(5), 1 - first);  // one counter for all channels
  card.Set_Sim_Rate(1);
  std::vector<int> reads(3072);
  for (int& read : reads) read = card.Get_Io(4);
  for (size_t i = 0; i < 2048; ++i) ASSERT_NE(reads[i], reads[i + 1024]) << "turns over every 1024 reads";
  card.Set_Sim_Rate(12);
  EXPECT_EQ(card.Get_Io(4), 0);  // the top bit of the counter
  card.Set_Io_Mode(1);           // ends the simulation; and a card that comes later is not mapped any more
  EXPECT_EQ(card.Get_Io(4), -1);
  card.Map_Io(2, 15);
  EXPECT_EQ(Count("SET_IO"), 0);
}

}  // namespace orsanta
